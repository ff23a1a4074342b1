// A shared object that uses the library from the first static object to the last, as a plugin of the connector would.
#include "plugin.h"

#include <common/vyn_connector_common.h>

namespace {

using namespace vyn_connector;

PluginReport LookAround()
{
    PluginReport report;
    report.constantsAreThere = ivo::Root.empty() && ivo::ResultOk.first == 0 && ivo::ResultOk.second.empty() &&
                               common::meta::IdSpecification.characters == "/\\\"'`%" &&
                               common::meta::IdSpecification.field2 == 0xFFFF;

    const Credentials login{"operator", std::string(100, 's')};
    std::uint8_t buffer[200];
    zt_arena arena{buffer, buffer, buffer + sizeof(buffer)};
    report.recordsConvert = common::CastFromZt(common::CastToZt(login, &arena), &arena) == login;
    return report;
}

std::exception_ptr Raise()
{
    try {
        common::CastToZt(Credentials{}, nullptr);
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

bool Knows(std::exception_ptr error)
{
    try {
        std::rethrow_exception(std::move(error));
    } catch (const mur::InvalidArgumentException& caught) {
        return std::string(caught.file) == "lyr_ipc/source/common/include/common/zt_string" && caught.line == 21 &&
               std::u16string_view(caught.Text()) == u"0x00000000 (No error)";
    } catch (...) {
        return false;
    }
}

} // namespace

extern "C" {
__attribute__((visibility("default"))) extern Plugin unloading_plugin;
Plugin unloading_plugin{{}, nullptr, &Raise, &Knows};
}

namespace {

struct StaticUser {
    StaticUser() { unloading_plugin.whileLoading = LookAround(); }
    ~StaticUser()
    {
        if (unloading_plugin.whileUnloading != nullptr) *unloading_plugin.whileUnloading = LookAround();
    }
    StaticUser(const StaticUser&) = delete;
    StaticUser& operator=(const StaticUser&) = delete;
};
const StaticUser staticUser;

} // namespace
