#include <ivo/constants.h>
#include <ivo/id_spec.h>
#include <mur/result_code.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

using testing::ElementsAre;

namespace {

static_assert(std::is_same_v<decltype(ivo::Root), const ivo::Path>);
static_assert(std::is_same_v<decltype(ivo::ResultOk), const std::pair<int, std::string>>);
static_assert(std::is_same_v<decltype(ivo::ItemAlreadyExists), const ivo::Error>);
static_assert(std::is_same_v<decltype(ivo::Error::resultCode), std::int32_t>);
static_assert(std::is_base_of_v<std::logic_error, ivo::Error>);
static_assert(std::is_same_v<decltype(*ivo::Root.begin()), const std::variant<unsigned long, std::string>&>);
static_assert(noexcept(ivo::Root.size()) && noexcept(ivo::Root.empty()));
static_assert(noexcept(ivo::Root.begin()) && noexcept(ivo::Root.end()));
static_assert(std::is_same_v<decltype(ivo::IdSpec::characters), std::string>);
static_assert(std::is_same_v<decltype(ivo::IdSpec::field2), std::uint32_t>);

// What a constant of a user sees that is built while the program is loaded.
struct SeenWhileLoading {
    bool rootIsEmpty = ivo::Root.empty();
    int code = ivo::ResultOk.first;
    std::string text = ivo::ResultOk.second;
    std::string error = ivo::PathMismatch.what();
};
const SeenWhileLoading seenWhileLoading;

// The library that answers for result codes, as it stands by itself.
void* Library()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&mur::rtl_result_code_message), &info) == 0) return nullptr;
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

} // namespace

TEST(Root, IsTheEmptyPath)
{
    EXPECT_EQ(ivo::Root.size(), 0u);
    EXPECT_TRUE(ivo::Root.empty());
    EXPECT_TRUE(ivo::Root.begin() == ivo::Root.end());
}

TEST(Path, HoldsNumericIdsAndNamesInOrder)
{
    using component = ivo::Path::component;
    const ivo::Path path({component(42ul), component(std::string("name"))});
    EXPECT_EQ(path.size(), 2u);
    EXPECT_FALSE(path.empty());
    EXPECT_THAT(std::vector<component>(path.begin(), path.end()),
                ElementsAre(component(42ul), component(std::string("name"))));
}

TEST(ResultOk, IsZeroWithoutAText)
{
    EXPECT_EQ(ivo::ResultOk.first, 0);
    EXPECT_EQ(ivo::ResultOk.second, "");
}

TEST(ErrorConstants, HaveTheirTextsAndResultCodes)
{
    EXPECT_STREQ(ivo::ItemAlreadyExists.what(), "ivo: Item with given id already exists");
    EXPECT_EQ(static_cast<std::uint32_t>(ivo::ItemAlreadyExists.resultCode), 0x8000004D);
    EXPECT_STREQ(ivo::ItemDoesNotExist.what(), "ivo: Item with given id does not exist");
    EXPECT_EQ(static_cast<std::uint32_t>(ivo::ItemDoesNotExist.resultCode), 0x8000004C);
    EXPECT_STREQ(ivo::PathMismatch.what(), "ivo: Path or id does not correspond to contained item");
    EXPECT_EQ(static_cast<std::uint32_t>(ivo::PathMismatch.resultCode), 0x8000004A);
}

TEST(ErrorConstants, CanBeThrownAndCaughtAsLogicErrors)
{
    try {
        throw ivo::ItemDoesNotExist;
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "ivo: Item with given id does not exist");
        EXPECT_NE(dynamic_cast<const ivo::Error*>(&error), nullptr);
    }
}

TEST(Constants, AreCompleteBeforeThoseThatAreBuiltAfterThem)
{
    EXPECT_TRUE(seenWhileLoading.rootIsEmpty);
    EXPECT_EQ(seenWhileLoading.code, 0);
    EXPECT_EQ(seenWhileLoading.text, "");
    EXPECT_EQ(seenWhileLoading.error, "ivo: Path or id does not correspond to contained item");
}

TEST(Constants, RootAndResultOkAreOneObjectInTheProcess)
{
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_ZN3ivo4RootE"), static_cast<const void*>(&ivo::Root));
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_ZN3ivo8ResultOkB5cxx11E"), static_cast<const void*>(&ivo::ResultOk));
}

TEST(Constants, RootAndResultOkAreExportedByTheLibraryAndTheErrorsAreNot)
{
    void* const library = Library();
    ASSERT_NE(library, nullptr);
    EXPECT_NE(dlsym(library, "_ZN3ivo4RootE"), nullptr);
    EXPECT_NE(dlsym(library, "_ZN3ivo8ResultOkB5cxx11E"), nullptr);
    EXPECT_EQ(dlsym(library, "_ZN3ivo17ItemAlreadyExistsE"), nullptr);
    EXPECT_EQ(dlsym(library, "_ZN3ivoL17ItemAlreadyExistsE"), nullptr);
    dlclose(library);
}

TEST(IdSpec, HoldsItsCharactersAndThenSixteenSetBits)
{
    const ivo::IdSpec spec{"/\\", {}};
    EXPECT_EQ(spec.characters, "/\\");
    EXPECT_EQ(ivo::IdSpec().field2, 0xFFFFu);
    EXPECT_EQ(ivo::IdSpec().characters, "");
    EXPECT_EQ(offsetof(ivo::IdSpec, characters), 0u);
    EXPECT_EQ(offsetof(ivo::IdSpec, field2), sizeof(std::string));
}
