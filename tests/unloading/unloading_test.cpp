// Opening, using and closing the library while the program runs. Closed, it is gone from the process's memory and has
// destroyed its constants. Of what it threw, the standard library's errors may outlive it; its own exceptions may not,
// for their functions go with it. Whoever knows those by their class is linked with the library, and as long as he is
// loaded closing it is refused.
#include "plugin.h"

#include "../replaced_new.h"

#include <common/connection_settings.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

namespace {

long liveAllocations = 0;

} // namespace

void* replaced::Allocate(std::size_t size)
{
    void* const memory = FromHeap(size);
    if (memory != nullptr) ++liveAllocations;
    return memory;
}

void replaced::Free(void* memory) noexcept
{
    if (memory != nullptr) --liveAllocations;
    std::free(memory);
}

namespace {

using vyn_connector::Credentials;
using WireCredentials = tq_vyn_connector_VynTypes_Credentials;

bool IsMapped(const std::string& file)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(file) != std::string::npos) return true;
    return false;
}

class Opened {
public:
    explicit Opened(const char* file) : handle(dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        EXPECT_NE(handle, nullptr) << dlerror();
    }
    ~Opened() { Close(); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    void Close()
    {
        if (handle == nullptr) return;
        EXPECT_EQ(dlclose(handle), 0) << dlerror();
        handle = nullptr;
    }

    template <typename T>
    T* Find(const char* symbol) const
    {
        void* const found = dlsym(handle, symbol);
        EXPECT_NE(found, nullptr) << dlerror();
        return reinterpret_cast<T*>(found);
    }

private:
    void* handle;
};

// The opened library's conversions of one record.
struct Conversions {
    explicit Conversions(const Opened& library)
        : write(library.Find<WireCredentials(const Credentials&, zt_arena*)>(
              "_ZN13vyn_connector6common8CastToZtERKNS_11CredentialsEP8zt_arena")),
          read(library.Find<Credentials(const WireCredentials&, const zt_arena*)>(
              "_ZN13vyn_connector6common10CastFromZtERK37tq_vyn_connector_VynTypes_CredentialsPK8zt_arena"))
    {
    }

    WireCredentials (*write)(const Credentials&, zt_arena*);
    Credentials (*read)(const WireCredentials&, const zt_arena*);
};

void ExpectConverts(const Conversions& conversions)
{
    const Credentials login{"operator", std::string(100, 's')};
    std::uint8_t buffer[200];
    zt_arena arena{buffer, buffer, buffer + sizeof(buffer)};
    const Credentials same = conversions.read(conversions.write(login, &arena), &arena);
    EXPECT_EQ(same.userName, login.userName);
    EXPECT_EQ(same.password, login.password);
}

template <typename Call>
std::exception_ptr Thrown(Call&& call)
{
    try {
        call();
    } catch (...) {
        return std::current_exception();
    }
    ADD_FAILURE() << "nothing was thrown";
    return nullptr;
}

std::exception_ptr OutOfRange(const Conversions& conversions)
{
    std::uint8_t buffer[8];
    const zt_arena arena{buffer, buffer, buffer + sizeof(buffer)};
    return Thrown([&] { conversions.read(WireCredentials{{100, 0}, {0, 0}}, &arena); });
}

std::exception_ptr InvalidArgument(const Conversions& conversions)
{
    return Thrown([&] { conversions.write(Credentials{}, nullptr); });
}

std::string TextOf(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& caught) {
        return caught.what();
    }
}

constexpr const char* outOfRangeText = "zt string: zt_arena does not contain an element with the address 100";

TEST(Unloading, AThousandTimesLeavesNothingOfTheLibraryBehind)
{
    ASSERT_FALSE(IsMapped(LIBRARY_FILE)) << "this program is not to be linked with the library";
    std::vector<std::exception_ptr> errors;
    errors.reserve(1000);

    for (int round = 0; round < 1000; ++round) {
        Opened library(LIBRARY_FILE);
        const Conversions conversions(library);
        ExpectConverts(conversions);
        EXPECT_EQ(TextOf(InvalidArgument(conversions)), "InvalidArgumentException");
        errors.push_back(OutOfRange(conversions));

        library.Close();
        ASSERT_FALSE(IsMapped(LIBRARY_FILE)) << "round " << round;
    }

    for (const std::exception_ptr& error : errors)
        ASSERT_EQ(TextOf(error), outOfRangeText);
}

TEST(Unloading, DestroysTheConstants)
{
    const long before = liveAllocations;
    Opened library(LIBRARY_FILE);
    EXPECT_GE(liveAllocations, before + 3) << "the error constants hold their texts";

    library.Close();

    EXPECT_EQ(liveAllocations, before);
}

TEST(Unloading, LetsTheStandardErrorsOutliveTheLibrary)
{
    std::exception_ptr error;
    {
        const Opened library(LIBRARY_FILE);
        error = OutOfRange(Conversions(library));
    }
    ASSERT_FALSE(IsMapped(LIBRARY_FILE));

    EXPECT_EQ(TextOf(error), outOfRangeText);
    EXPECT_THROW(std::rethrow_exception(error), std::out_of_range);
}

TEST(Unloading, IsRefusedWhileSomebodyIsLinkedWithTheLibrary)
{
    Opened plugin(PLUGIN_FILE);
    const auto* const user = plugin.Find<Plugin>(pluginSymbol);
    {
        Opened library(LIBRARY_FILE);
        std::exception_ptr error = InvalidArgument(Conversions(library));
        library.Close();
        EXPECT_TRUE(IsMapped(LIBRARY_FILE));
        EXPECT_TRUE(user->knows(error));
        EXPECT_TRUE(user->knows(user->raise()));
    }

    plugin.Close();

    EXPECT_FALSE(IsMapped(PLUGIN_FILE));
    EXPECT_FALSE(IsMapped(LIBRARY_FILE));
}

// Not a promise to rely on: it is why an exception of the library's own has to be gone before the library is.
TEST(UnloadingDeathTest, EndsTheProcessThatDropsAnExceptionOfTheLibrarysOwnAfterwards)
{
    const auto dropTooLate = [] {
        std::exception_ptr error;
        {
            const Opened library(LIBRARY_FILE);
            error = InvalidArgument(Conversions(library));
        }
        std::fputs("dropping it", stderr);
        error = nullptr;
        std::_Exit(0);
    };
    EXPECT_DEATH(dropTooLate(), "dropping it");
}

TEST(Unloading, OfAPluginFindsTheLibraryCompleteInItsFirstAndItsLastStaticObject)
{
    for (int round = 0; round < 100; ++round) {
        PluginReport last;
        {
            const Opened plugin(PLUGIN_FILE);
            auto* const user = plugin.Find<Plugin>(pluginSymbol);
            EXPECT_TRUE(user->whileLoading.constantsAreThere);
            EXPECT_TRUE(user->whileLoading.recordsConvert);
            user->whileUnloading = &last;
        }
        EXPECT_TRUE(last.constantsAreThere);
        EXPECT_TRUE(last.recordsConvert);
        ASSERT_FALSE(IsMapped(PLUGIN_FILE));
        ASSERT_FALSE(IsMapped(LIBRARY_FILE));
    }
}

} // namespace
