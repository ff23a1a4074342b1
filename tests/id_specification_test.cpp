// The constant that says which characters mean something in a path of identifiers: the library's own, whole before any
// static object of a program that reads it.
#include <common/id_specification.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <type_traits>

namespace {

using vyn_connector::common::meta::IdSpecification;

static_assert(std::is_same_v<decltype(IdSpecification), const ivo::IdSpec>);

// What a constant of a user sees that is built while the program is loaded.
struct SeenWhileLoading {
    std::string characters = IdSpecification.characters;
    std::uint32_t number = IdSpecification.field2;
};
const SeenWhileLoading seenWhileLoading;

TEST(IdSpecification, NamesTheSixCharactersInOrder)
{
    EXPECT_EQ(IdSpecification.characters, std::string({'/', '\\', '"', '\'', '`', '%'}));
}

TEST(IdSpecification, EndsWithSixteenSetBits)
{
    EXPECT_EQ(IdSpecification.field2, 0xFFFFu);
}

TEST(IdSpecification, IsCompleteBeforeTheObjectsThatAreBuiltAfterIt)
{
    EXPECT_EQ(seenWhileLoading.characters, "/\\\"'`%");
    EXPECT_EQ(seenWhileLoading.number, 0xFFFFu);
}

TEST(IdSpecification, IsFoundByItsName)
{
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_ZN13vyn_connector6common4meta15IdSpecificationE"), &IdSpecification);
}

} // namespace
