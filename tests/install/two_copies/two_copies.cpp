// Two copies of the library in one process, one linked and one opened by its path, as happens where a plugin brings its
// own: two_copies PATH. Each reads what the other wrote, and what either throws is caught by its type.
#include <common/connection_settings.h>
#include <mur/exception.h>
#include <mur/utf8.h>

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace {

using vyn_connector::Credentials;
using WireCredentials = tq_vyn_connector_VynTypes_Credentials;

struct Copy {
    const char* name;
    WireCredentials (*write)(const Credentials&, zt_arena*);
    Credentials (*read)(const WireCredentials&, const zt_arena*);
};

bool passes(bool condition, const char* what, const char* copy)
{
    if (!condition) std::fprintf(stderr, "two_copies: %s: %s\n", copy, what);
    return condition;
}

template <typename Function>
Function find(void* library, const char* symbol)
{
    void* const found = dlsym(library, symbol);
    if (found == nullptr) std::fprintf(stderr, "two_copies: %s\n", dlerror());
    return reinterpret_cast<Function>(found);
}

std::string fileOf(void* function)
{
    Dl_info info{};
    return dladdr(function, &info) != 0 ? info.dli_fname : "";
}

bool understand(const Copy& writer, const Copy& reader)
{
    const Credentials login{"operator", std::string(100, 's')};
    std::uint8_t buffer[200];
    zt_arena arena{buffer, buffer, buffer + sizeof(buffer)};
    return passes(reader.read(writer.write(login, &arena), &arena) == login, "is not read by the other", writer.name);
}

template <typename Error, typename Call, typename Judge>
bool throws(Call&& call, Judge&& judge)
{
    try {
        call();
    } catch (const Error& error) {
        return judge(error);
    } catch (...) {
    }
    return false;
}

bool throwsByType(const Copy& copy)
{
    std::uint8_t buffer[3];
    zt_arena arena{buffer, buffer, buffer + sizeof(buffer)};
    const auto fullArena = [&] { copy.write(Credentials{"user", ""}, &arena); };
    const auto noArena = [&] { copy.write(Credentials{"user", ""}, nullptr); };

    const auto isOutOfSpace = [](const mur::ResultCodeException& error) {
        return static_cast<std::uint32_t>(error.resultCode) == 0x80000062 && error.file == nullptr && error.line == 0 &&
               error.detail == 0 && error.message.size == 0 && error.nested == nullptr &&
               mur::to_utf8(error.Text()) == "0x80000062 (Out of space)" &&
               std::strcmp(error.what(), "ResultCodeException") == 0;
    };
    const auto isNoArena = [](const mur::InvalidArgumentException& error) {
        return error.resultCode == 0 && error.line == 21 &&
               std::strcmp(error.file, "lyr_ipc/source/common/include/common/zt_string") == 0;
    };
    return passes(throws<mur::ResultCodeException>(fullArena, isOutOfSpace), "a full arena", copy.name) &&
           passes(throws<mur::InvalidArgumentException>(noArena, isNoArena), "no arena", copy.name) &&
           // Caught by the base, and thrown again as what it is.
           passes(throws<mur::InvalidArgumentException>(
                      [&] {
                          throws<mur::Exception>(noArena,
                                                 [](const mur::Exception& error) { return error.Throw(), false; });
                      },
                      isNoArena),
                  "no arena, thrown again", copy.name) &&
           passes(throws<std::length_error>(
                      [&] {
                          copy.write(Credentials{std::string(5000, 'x'), ""}, &arena);
                      },
                      [](const std::length_error& error) {
                          return error.what() == std::string("zt string: string size larger than zt buffer");
                      }),
                  "a long text", copy.name) &&
           passes(throws<std::out_of_range>(
                      [&] {
                          copy.read(WireCredentials{{100, 0}, {0, 0}}, &arena);
                      },
                      [](const std::out_of_range& error) {
                          return error.what() == std::string("zt string: zt_arena does not "
                                                             "contain an element with the "
                                                             "address 100");
                      }),
                  "a pointer outside", copy.name);
}

} // namespace

int main(int, char** arguments)
{
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "two_copies: %s\n", dlerror());
        return 1;
    }
    const Copy linked{"linked", &vyn_connector::common::CastToZt, &vyn_connector::common::CastFromZt};
    const Copy opened{
        "opened",
        find<decltype(Copy::write)>(library, "_ZN13vyn_connector6common8CastToZtERKNS_11CredentialsEP8zt_arena"),
        find<decltype(Copy::read)>(
            library, "_ZN13vyn_connector6common10CastFromZtERK37tq_vyn_connector_VynTypes_CredentialsPK8zt_arena")};
    if (opened.write == nullptr || opened.read == nullptr) return 1;

    const std::string linkedFile = fileOf(reinterpret_cast<void*>(linked.write));
    const std::string openedFile = fileOf(reinterpret_cast<void*>(opened.write));
    std::printf("linked %s\nopened %s\n", linkedFile.c_str(), openedFile.c_str());
    const bool passed =
        passes(linkedFile != openedFile && linked.write != opened.write, "is the one that is linked", opened.name) &&
        understand(linked, opened) && understand(opened, linked) && throwsByType(linked) && throwsByType(opened);
    return passed ? 0 : 1;
}
