// What the shared library throws is caught outside it: by its own class, by each of its bases, and by nothing else.
#include <common/connection_settings.h>

#include "arena.h"

#include <typeinfo>

namespace {

using vyn_connector::Credentials;
using vyn_connector::ProxySettings;
using vyn_connector::common::BlobToZt;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::StringToZt;
using WireCredentials = tq_vyn_connector_VynTypes_Credentials;
using WireProxy = tq_vyn_connector_VynTypes_ProxySettings;

// Each raises its error in code that the library holds, not in an instantiation of this program.
struct Cases {
    void (*raiseInvalidArgument)();
    void (*raiseOutOfSpace)();
    void (*raiseLengthError)();
    void (*raiseOutOfRange)();
};

const zt_ptr_t behindTheEnd{100, 0};

const Cases cases[] = {
    // the string writer of limit 128
    {[] { StringToZt<128>("text", nullptr, nullptr); },
     [] {
         TestArena arena(3);
         zt_ptr_t out{};
         StringToZt<128>("text", &out, arena.Get());
     },
     [] {
         TestArena arena(200);
         zt_ptr_t out{};
         StringToZt<128>(std::string(129, 'x'), &out, arena.Get());
     },
     [] { CastFromZt(behindTheEnd, TestArena(8).Get()); }},
    // the string writer of limit 256
    {[] { StringToZt<256>("text", nullptr, nullptr); },
     [] {
         TestArena arena(3);
         zt_ptr_t out{};
         StringToZt<256>("text", &out, arena.Get());
     },
     [] {
         TestArena arena(400);
         zt_ptr_t out{};
         StringToZt<256>(std::string(257, 'x'), &out, arena.Get());
     },
     [] { vyn_connector::common::ZtToBlob(&behindTheEnd, TestArena(8).Get()); }},
    // blobs
    {[] { BlobToZt({1}, nullptr, nullptr); },
     [] {
         TestArena arena(0);
         zt_ptr_t out{};
         BlobToZt({1}, &out, arena.Get());
     },
     [] {
         TestArena arena(8);
         zt_ptr_t out{};
         BlobToZt(std::vector<std::uint8_t>(65537), &out, arena.Get());
     },
     [] { vyn_connector::common::ZtToBlob(&behindTheEnd, TestArena(8).Get()); }},
    // a record
    {[] {
         CastToZt(Credentials{"user", "secret"}, nullptr);
     },
     [] {
         CastToZt(Credentials{"user", "secret"}, TestArena(8).Get());
     },
     [] {
         CastToZt(Credentials{"user", std::string(129, 'x')}, TestArena(200).Get());
     },
     [] {
         CastFromZt(WireCredentials{behindTheEnd, {}}, TestArena(8).Get());
     }},
    // a record in a record
    {[] { CastToZt(ProxySettings{}, nullptr); },
     [] {
         CastToZt(ProxySettings{"proxy", 1, {"user", "secret"}}, TestArena(10).Get());
     },
     [] {
         CastToZt(ProxySettings{"proxy", 1, {std::string(129, 'x'), ""}}, TestArena(200).Get());
     },
     [] {
         CastFromZt(WireProxy{{}, 1, {{}, behindTheEnd}}, TestArena(8).Get());
     }},
};

// Whether a handler for `Handled` catches what `raise` throws.
template <typename Handled>
bool IsCaughtAs(void (*raise)())
{
    try {
        raise();
    } catch (const Handled&) {
        return true;
    } catch (...) {
        return false;
    }
    ADD_FAILURE() << "nothing was thrown";
    return false;
}

// The class of what `raise` throws, seen through `Base`.
template <typename Base>
const std::type_info& ClassOf(void (*raise)())
{
    try {
        raise();
    } catch (const Base& error) {
        return typeid(error);
    } catch (...) {
        ADD_FAILURE() << "something else was thrown";
    }
    return typeid(void);
}

TEST(ThrownInTheLibrary, ArgumentErrorsAreCaughtByTheirClassAndItsBases)
{
    for (const Cases& library : cases) {
        EXPECT_TRUE(IsCaughtAs<mur::InvalidArgumentException>(library.raiseInvalidArgument));
        EXPECT_TRUE(IsCaughtAs<mur::ResultCodeException>(library.raiseInvalidArgument));
        EXPECT_TRUE(IsCaughtAs<mur::Exception>(library.raiseInvalidArgument));
        EXPECT_TRUE(IsCaughtAs<std::exception>(library.raiseInvalidArgument));
        EXPECT_FALSE(IsCaughtAs<std::logic_error>(library.raiseInvalidArgument));
        EXPECT_TRUE(ClassOf<mur::Exception>(library.raiseInvalidArgument) == typeid(mur::InvalidArgumentException));
        EXPECT_TRUE(ClassOf<std::exception>(library.raiseInvalidArgument) == typeid(mur::InvalidArgumentException));
    }
}

TEST(ThrownInTheLibrary, ArgumentErrorsAreCaughtByTheBasesBetweenTheClasses)
{
    using BetweenResultCodeAndArgument = mur::ExceptionBase<mur::InvalidArgumentException, mur::ResultCodeException>;
    using BetweenExceptionAndResultCode = mur::ExceptionBase<mur::ResultCodeException, mur::Exception>;
    for (const Cases& library : cases) {
        EXPECT_TRUE(IsCaughtAs<BetweenResultCodeAndArgument>(library.raiseInvalidArgument));
        EXPECT_TRUE(IsCaughtAs<BetweenExceptionAndResultCode>(library.raiseInvalidArgument));
        EXPECT_FALSE(IsCaughtAs<BetweenResultCodeAndArgument>(library.raiseOutOfSpace));
        EXPECT_TRUE(IsCaughtAs<BetweenExceptionAndResultCode>(library.raiseOutOfSpace));
    }
}

TEST(ThrownInTheLibrary, ExhaustionIsCaughtByItsClassAndItsBases)
{
    for (const Cases& library : cases) {
        EXPECT_FALSE(IsCaughtAs<mur::InvalidArgumentException>(library.raiseOutOfSpace));
        EXPECT_TRUE(IsCaughtAs<mur::ResultCodeException>(library.raiseOutOfSpace));
        EXPECT_TRUE(IsCaughtAs<mur::Exception>(library.raiseOutOfSpace));
        EXPECT_TRUE(IsCaughtAs<std::exception>(library.raiseOutOfSpace));
        EXPECT_TRUE(ClassOf<mur::Exception>(library.raiseOutOfSpace) == typeid(mur::ResultCodeException));
        EXPECT_TRUE(ClassOf<std::exception>(library.raiseOutOfSpace) == typeid(mur::ResultCodeException));
    }
}

TEST(ThrownInTheLibrary, StandardErrorsAreCaughtByTheirClassAndItsBases)
{
    for (const Cases& library : cases) {
        EXPECT_TRUE(IsCaughtAs<std::length_error>(library.raiseLengthError));
        EXPECT_TRUE(IsCaughtAs<std::logic_error>(library.raiseLengthError));
        EXPECT_FALSE(IsCaughtAs<std::out_of_range>(library.raiseLengthError));
        EXPECT_FALSE(IsCaughtAs<mur::Exception>(library.raiseLengthError));
        EXPECT_TRUE(ClassOf<std::exception>(library.raiseLengthError) == typeid(std::length_error));

        EXPECT_TRUE(IsCaughtAs<std::out_of_range>(library.raiseOutOfRange));
        EXPECT_TRUE(IsCaughtAs<std::logic_error>(library.raiseOutOfRange));
        EXPECT_FALSE(IsCaughtAs<std::length_error>(library.raiseOutOfRange));
        EXPECT_FALSE(IsCaughtAs<mur::Exception>(library.raiseOutOfRange));
        EXPECT_TRUE(ClassOf<std::exception>(library.raiseOutOfRange) == typeid(std::out_of_range));
    }
}

TEST(ThrownInTheLibrary, AnErrorOutlivesTheCallThatRaisedIt)
{
    std::unique_ptr<mur::Exception> kept;
    try {
        StringToZt<128>("text", nullptr, nullptr);
    } catch (const mur::Exception& error) {
        kept.reset(error.Clone());
    }

    ASSERT_NE(kept, nullptr);
    const mur::Exception& error = *kept;
    EXPECT_TRUE(typeid(error) == typeid(mur::InvalidArgumentException));
    EXPECT_STREQ(error.file, "lyr_ipc/source/common/include/common/zt_string");
    EXPECT_EQ(error.line, 21);
    EXPECT_THROW(error.Throw(), mur::InvalidArgumentException);
}

} // namespace
