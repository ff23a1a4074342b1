// Step 4: the last lines of a log file, as events. An event's conversion does not throw: a field that does not fit
// shows up in the status, and the connector says which one it was and goes on without it.
#include "host/descriptor.h"
#include "host/files.h"
#include "steps/conversation.h"
#include "steps/show.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <deque>
#include <filesystem>
#include <sstream>

namespace exchange {

namespace {

constexpr std::size_t linesToSend = 10;

// Names what the connector finds by itself; empty where there is no log.
std::string FindLog(const std::string& root)
{
    for (const char* name : {"syslog", "messages", "dpkg.log", "apt/history.log", "alternatives.log"}) {
        std::string path = PathBelow(root, fmt::format("var/log/{}", name));
        std::error_code ignored;
        if (std::filesystem::file_size(path, ignored) > 0 && !ignored && access(path.c_str(), R_OK) == 0) return path;
    }
    return "";
}

struct LogLine {
    std::string text;
    std::uint64_t offset; // in the file
};

// The last lines of a file of any size: only its end is read.
std::deque<LogLine> LastLines(const std::string& path)
{
    constexpr off_t tail = 65536;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK), path);
    struct stat status {};
    if (fstat(file.Get(), &status) != 0) RaiseErrno(path);
    if (!S_ISREG(status.st_mode)) throw std::runtime_error(path + ": not a regular file");

    const off_t begin = std::max<off_t>(0, status.st_size - tail);
    std::string content(static_cast<std::size_t>(status.st_size - begin), '\0');
    const ssize_t count = pread(file.Get(), content.data(), content.size(), begin);
    if (count < 0) RaiseErrno(path);
    content.resize(static_cast<std::size_t>(count));

    std::deque<LogLine> lines;
    std::size_t start = begin == 0 ? 0 : content.find('\n') + 1; // the first line may have lost its beginning
    while (start < content.size()) {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        if (end != start)
            lines.push_back({content.substr(start, end - start), static_cast<std::uint64_t>(begin) + start});
        if (lines.size() > linesToSend) lines.pop_front();
        start = end + 1;
    }
    return lines;
}

vyn_connector::VynEventSeverity SeverityOf(const std::string& line)
{
    std::string lower = line;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    const auto has = [&](const char* word) { return lower.find(word) != std::string::npos; };
    if (has("error") || has("fail") || has("fatal")) return vyn_connector::VynEventSeverity::Severity3;
    if (has("warn")) return vyn_connector::VynEventSeverity::Severity2;
    if (has("notice") || has("remove")) return vyn_connector::VynEventSeverity::Severity1;
    return vyn_connector::VynEventSeverity::Severity0;
}

vyn_connector::VynEvent EventOf(const LogLine& line, const std::string& path, std::size_t number)
{
    vyn_connector::VynEvent event;
    event.field1 = "LogLine";
    event.severity = SeverityOf(line.text);
    event.field3 = path;
    std::istringstream words(line.text);
    words >> event.field5 >> event.field6; // date and time, in most logs
    event.field7 = line.text;
    event.field8 = static_cast<std::uint32_t>(number);
    event.field9 = line.offset;
    words.clear();
    words.seekg(0);
    for (std::string& word : event.stringArray)
        words >> word;
    return event;
}

// Empties the fields of the event that cannot be sent.
void DropWhatDoesNotFit(vyn_connector::VynEvent& event, Console& console)
{
    std::vector<std::uint8_t> buffer(vyn_connector::common::ArenaSize(event, 0));
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    auto status = lyr::ipc::arena::conv::Status::Ok;
    const auto wire = lyr::ipc::arena::conv::ToZt(arena, event, status);
    if (status == lyr::ipc::arena::conv::Status::Ok) return;

    const auto check = [&](const std::string& name, std::string& text, const zt_ptr_t& ptr) {
        if (ptr.offset != 0xFFFFFFFF) return;
        console.Line(fmt::format("event {}: {} has {} bytes, which do not fit: sent without it", event.field8, name,
                                 text.size()));
        text.clear();
    };
    vyn_connector::common::ForEachRow<vyn_connector::VynEvent>([&](auto row) {
        auto& value = decltype(row)::InDomain::Of(event);
        const auto& onWire = decltype(row)::OnWire::Of(wire);
        if constexpr (std::is_same_v<decltype(event.field1), std::decay_t<decltype(value)>>)
            check(row.name, value, onWire);
        else if constexpr (std::is_same_v<decltype(event.stringArray), std::decay_t<decltype(value)>>)
            for (std::size_t i = 0; i < value.size(); ++i)
                check(fmt::format("{}[{}]", row.name, i), value[i], onWire[i]);
    });
}

} // namespace

void SendEvents(Session& session)
{
    const std::string path = session.options.log.empty() ? FindLog(session.options.root) : session.options.log;
    session.console.Line(path.empty() ? "there is no log file" : "the last lines of " + path);
    std::size_t number = 0;
    for (const LogLine& line : path.empty() ? std::deque<LogLine>() : LastLines(path)) {
        vyn_connector::VynEvent event = EventOf(line, path, ++number);
        DropWhatDoesNotFit(event, session.console);
        session.channel.Send(event);
    }
    session.channel.SendEnd();
}

void ReceiveEvents(Session& session)
{
    while (const auto received = session.channel.ReceiveOrEnd<vyn_connector::VynEvent>()) {
        const vyn_connector::VynEvent& event = received->record;
        session.console.Line(
            fmt::format("event {}, severity {}: {}", event.field8, static_cast<int>(event.severity), event.field7));
    }
}

} // namespace exchange
