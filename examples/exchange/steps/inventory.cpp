// Step 2: what the connector reports about the machine and about one product on it. What the machine lacks is left
// empty; what is too long for its field is cut, and the console says so.
#include "host/files.h"
#include "steps/conversation.h"
#include "steps/field_limits.h"
#include "steps/settings.h"
#include "steps/show.h"

#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <sstream>
#include <thread>

namespace exchange {

namespace {

// What this step puts into the records' fields.
constexpr std::tuple labels = {
    Label<&vyn_connector::AppInfo::productInfo>{"a package"},
    Label<&vyn_connector::ProductInfo::field1>{"package"},
    Label<&vyn_connector::ProductInfo::field2>{"version"},
    Label<&vyn_connector::ProductInfo::field3>{"bytes installed"},
    Label<&vyn_connector::ProductInfo::field4>{"description"},
    Label<&vyn_connector::ProductInfo::field5>{"maintainer"},
    Label<&vyn_connector::ProductInfo::updCfgArray>{"etc/os-release"},
    Label<&vyn_connector::ProductInfo::hsdpInfo>{"kernel hardening"},
    Label<&vyn_connector::ProductHsdpInfo::field1>{"settings found"},
    Label<&vyn_connector::ProductInfo::field6>{"is installed"},
    Label<&vyn_connector::LicenseKeyInfo::field4>{"since"},
    Label<&vyn_connector::LicenseKeyInfo::field8>{"licence"},
    Label<&vyn_connector::AppInfo::deviceInfo>{"the machine"},
    Label<&vyn_connector::DeviceInfo::field1>{"host name"},
    Label<&vyn_connector::DeviceInfo::field2>{"operating system"},
    Label<&vyn_connector::DeviceInfo::field3>{"processors"},
    Label<&vyn_connector::DeviceInfo::field4>{"page size, bytes"},
    Label<&vyn_connector::DeviceInfo::field5>{"bits of an address"},
    Label<&vyn_connector::DeviceInfo::field6>{"kernel"},
    Label<&vyn_connector::DeviceInfo::field7>{"kernel release"},
    Label<&vyn_connector::DeviceInfo::field8>{"memory, bytes"},
    Label<&vyn_connector::DeviceInfo::field9>{"architecture"},
    Label<&vyn_connector::DeviceInfo::field10>{"CPU"},
    Label<&vyn_connector::DeviceInfo::field11>{"system's name"},
    Label<&vyn_connector::DeviceInfo::field12>{"system's version"},
    Label<&vyn_connector::DeviceInfo::field13>{"version's name"},
    Label<&vyn_connector::DeviceInfo::field14>{"machine's identity"},
    Label<&vyn_connector::DeviceInfo::field15>{"kernel build"},
    Label<&vyn_connector::DynamicAppInfo::field1>{"free memory, bytes"},
};

// The machine's files, below the root that was given.
class Machine {
public:
    explicit Machine(std::string root) : root_(std::move(root)) {}

    std::string Path(const std::string& path) const { return PathBelow(root_, path); }

    std::vector<std::string> Lines(const std::string& path) const
    {
        std::istringstream content(ReadFileIfAny(Path(path)).value_or(""));
        std::vector<std::string> lines;
        for (std::string line; std::getline(content, line);)
            lines.push_back(line);
        return lines;
    }

    std::string FirstLine(const std::string& path) const
    {
        const std::vector<std::string> lines = Lines(path);
        return lines.empty() ? "" : lines.front();
    }

private:
    std::string root_;
};

// The text behind "key", blanks and a colon in the first line that has them; empty where there is none.
std::string ValueOf(const std::vector<std::string>& lines, std::string_view key)
{
    for (const std::string& line : lines) {
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || line.compare(0, key.size(), key) != 0) continue;
        if (line.find_first_not_of(" \t", key.size()) != colon) continue;
        const std::size_t begin = line.find_first_not_of(" \t", colon + 1);
        return begin == std::string::npos ? "" : line.substr(begin);
    }
    return "";
}

std::uint64_t ToNumber(std::string_view text)
{
    std::uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::uint64_t BytesFromMeminfo(const Machine& machine, std::string_view key)
{
    return ToNumber(ValueOf(machine.Lines("proc/meminfo"), key)) * 1024;
}

// NAME="value" lines, quotes removed.
std::vector<vyn_connector::ProductUpdCfg> OsRelease(const Machine& machine)
{
    std::vector<vyn_connector::ProductUpdCfg> entries;
    for (const std::string& line : machine.Lines("etc/os-release")) {
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos || line[0] == '#') continue;
        std::string value = line.substr(equals + 1);
        if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
            value = value.substr(1, value.size() - 2);
        entries.push_back({line.substr(0, equals), value});
    }
    return entries;
}

std::string EntryOf(const std::vector<vyn_connector::ProductUpdCfg>& entries, std::string_view name)
{
    for (const vyn_connector::ProductUpdCfg& entry : entries)
        if (entry.field1 == name) return entry.field2;
    return "";
}

// The package's paragraph in dpkg's list; empty where it is not installed.
std::vector<std::string> InstalledPackage(const Machine& machine, const std::string& name)
{
    std::vector<std::string> paragraph;
    bool wanted = false;
    for (const std::string& line : machine.Lines("var/lib/dpkg/status")) {
        if (line == "Package: " + name) wanted = true;
        if (wanted && line.empty()) break;
        if (wanted) paragraph.push_back(line);
    }
    return ValueOf(paragraph, "Status") == "install ok installed" ? paragraph : std::vector<std::string>();
}

std::optional<wem::types::Timestamp> ChangeTimeOf(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return wem::types::Timestamp(std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec);
}

// Settings of the kernel that harden the machine.
vyn_connector::ProductHsdpInfo Hardening(const Machine& machine)
{
    vyn_connector::ProductHsdpInfo info;
    for (const char* name :
         {"randomize_va_space", "kptr_restrict", "dmesg_restrict", "yama/ptrace_scope", "unprivileged_bpf_disabled"}) {
        const std::string value = machine.FirstLine(fmt::format("proc/sys/kernel/{}", name));
        if (!value.empty()) info.statuses.push_back({name, value});
    }
    info.field1 = static_cast<std::uint32_t>(info.statuses.size());
    return info;
}

vyn_connector::ProductInfo Product(const Machine& machine, const std::string& name)
{
    const std::vector<std::string> package = InstalledPackage(machine, name);
    vyn_connector::ProductInfo product;
    product.field1 = name;
    product.field2 = ValueOf(package, "Version");
    product.field3 = ToNumber(ValueOf(package, "Installed-Size")) * 1024; // bytes
    product.field4 = ValueOf(package, "Description");
    product.field5 = ValueOf(package, "Maintainer");
    product.updCfgArray.items = OsRelease(machine);
    product.hsdpInfo = Hardening(machine);
    product.field6 = package.empty() ? 0 : 1; // installed
    return product;
}

// A package has one licence, which does not expire.
vyn_connector::LicenseInfo License(const Machine& machine, const std::string& name)
{
    vyn_connector::LicenseInfo license;
    const std::vector<std::string> copyright = machine.Lines(fmt::format("usr/share/doc/{}/copyright", name));
    if (copyright.empty()) return license;
    license.keyInfo1.emplace();
    license.keyInfo1->field4 = ChangeTimeOf(machine.Path(fmt::format("usr/share/doc/{}/copyright", name)));
    const std::string licenseName = ValueOf(copyright, "License");
    if (!licenseName.empty()) license.keyInfo1->field8 = licenseName;
    return license;
}

std::array<std::byte, 16> MachineId(const Machine& machine)
{
    std::array<std::byte, 16> id{};
    const std::string digits = machine.FirstLine("etc/machine-id");
    if (digits.size() != 2 * id.size()) return id;
    for (std::size_t i = 0; i < id.size(); ++i) {
        unsigned byte = 0;
        std::from_chars(&digits[2 * i], &digits[2 * i] + 2, byte, 16);
        id[i] = static_cast<std::byte>(byte);
    }
    return id;
}

vyn_connector::DeviceInfo Device(const Machine& machine)
{
    const std::vector<vyn_connector::ProductUpdCfg> osRelease = OsRelease(machine);
    utsname kernel{};
    uname(&kernel);

    vyn_connector::DeviceInfo device;
    device.field1 = kernel.nodename;
    device.field2 = EntryOf(osRelease, "PRETTY_NAME");
    device.field3 = std::thread::hardware_concurrency();
    device.field4 = static_cast<std::uint32_t>(sysconf(_SC_PAGESIZE));
    device.field5 = 8 * sizeof(void*);
    device.field6 = kernel.sysname;
    device.field7 = kernel.release;
    device.field8 = BytesFromMeminfo(machine, "MemTotal");
    device.field9 = kernel.machine;
    device.field10 = ValueOf(machine.Lines("proc/cpuinfo"), "model name");
    device.field11 = EntryOf(osRelease, "ID");
    device.field12 = EntryOf(osRelease, "VERSION_ID");
    device.field13 = EntryOf(osRelease, "VERSION_CODENAME");
    device.field14 = MachineId(machine);
    device.field15 = kernel.version;
    return device;
}

} // namespace

void SendInventory(Session& session)
{
    const Machine machine(session.options.root);
    const std::string package = Settings(session.options.settings).Text("/product/package");

    vyn_connector::AppInfo report{Product(machine, package), License(machine, package), Device(machine)};
    if (report.productInfo.field6 == 0) session.console.Line(fmt::format("{} is not installed", package));
    CutToLimits(report, "AppInfo", [&](const std::string& line) { session.console.Line(line); });
    session.channel.Send(report);
    session.channel.Send(vyn_connector::DynamicAppInfo{BytesFromMeminfo(machine, "MemAvailable")});
}

void ReceiveInventory(Session& session)
{
    Show(session.console, session.channel.Receive<vyn_connector::AppInfo>(), labels);
    Show(session.console, session.channel.Receive<vyn_connector::DynamicAppInfo>(), labels);
}

} // namespace exchange
