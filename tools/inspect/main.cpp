// The program: what the command line asks for, and the exit status.
#include "capture.h"
#include "diff.h"
#include "encode.h"
#include "json.h"
#include "listing.h"
#include "map.h"
#include "page.h"
#include "printable.h"
#include "progress.h"
#include "tree.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int wrongUse = 64;

struct Options {
    std::vector<std::string> files;
    std::string record;
    std::string map;
    std::string html;
    std::string encode;
    std::string output;
    bool isJson = false;
    bool isDiff = false;
    bool follows = false;
    bool showsSecrets = false;
    std::optional<std::size_t> start;
    std::optional<std::size_t> top;
    std::optional<std::size_t> elements;
};

// The command line asks for what cannot be done.
class UseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

int StatusOf(inspect::Standing standing)
{
    return static_cast<int>(standing);
}
static_assert(static_cast<int>(inspect::Standing::Canonical) == 0 && static_cast<int>(inspect::Standing::Refused) == 2);

int Complain(const std::exception& error)
{
    std::fprintf(stderr, "vyn-inspect: %s\n", error.what());
    return wrongUse;
}

void Print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        throw std::runtime_error("the output cannot be written");
}

inspect::Look LookOf(const Options& options)
{
    const bool isColoured = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    return {isColoured, options.showsSecrets};
}

// More fields than any message has whose fields share no bytes.
constexpr std::size_t mostFields = 4000000;

inspect::Extent ExtentOf(const Options& options)
{
    inspect::Extent extent = options.isJson ? inspect::jsonExtent : inspect::Extent{};
    if (options.elements) {
        extent.mostElements = *options.elements;
        extent.mostNodes = mostFields;
    }
    return extent;
}

inspect::Message ReadMessage(const Options& options, inspect::Capture capture)
{
    capture.start = options.start.value_or(0);
    if (options.top) capture.top = options.top;
    const inspect::Extent extent = ExtentOf(options);
    return options.isJson ? inspect::InspectForJson(capture, extent) : inspect::Inspect(capture, extent);
}

inspect::Capture RawCapture(const Options& options)
{
    if (options.files.size() != 2) throw UseError("--record takes two files: the wire structure and the arena");
    const std::vector<std::string_view> names = inspect::RecordNames();
    if (std::find(names.begin(), names.end(), options.record) == names.end())
        throw UseError(fmt::format("there is no record {}; there are {}", inspect::Printable(options.record),
                                   fmt::join(names, ", ")));
    inspect::Capture capture;
    capture.record = options.record;
    capture.wire = inspect::ReadBytes(options.files[0], inspect::mostArenaBytes);
    capture.arena = inspect::ReadBytes(options.files[1], inspect::mostArenaBytes);
    return capture;
}

// What one message is shown as.
void Show(const Options& options, const inspect::Message& message)
{
    if (!options.map.empty()) inspect::WriteFile(options.map, inspect::Map(message, options.showsSecrets));
    if (!options.html.empty()) inspect::WriteFile(options.html, inspect::Page(message, options.showsSecrets));
    if (options.isJson)
        Print(inspect::ToJson(message, options.showsSecrets, ExtentOf(options).mostNodes));
    else if (options.map.empty() && options.html.empty())
        Print(inspect::Tree(message, LookOf(options)));
}

int ShowDirectory(const Options& options, const std::string& directory)
{
    if (!options.map.empty() || !options.html.empty() || options.isJson || options.start || options.top ||
        options.elements || options.showsSecrets)
        throw UseError(inspect::Printable(directory) + ": a directory, which is only listed");
    const inspect::Listed listed = inspect::List(directory, options.follows, LookOf(options));
    return listed.isWhole ? StatusOf(listed.worst) : wrongUse;
}

int ShowFile(const Options& options, const std::string& file, std::string_view heading)
{
    if (std::filesystem::is_directory(file)) return ShowDirectory(options, file);
    const inspect::Message message = ReadMessage(options, inspect::ReadCapture(file));
    Print(std::string(heading));
    Show(options, message);
    return StatusOf(message.IsA());
}

int ShowFiles(const Options& options)
{
    const bool isOne = options.files.size() == 1;
    if (!isOne && !(options.map.empty() && options.html.empty())) throw UseError("--map and --html take one message");
    int status = 0;
    inspect::Progress progress;
    for (std::size_t i = 0; i < options.files.size(); ++i) {
        progress.Show(i, options.files.size());
        const std::string& file = options.files[i];
        const bool hasHeading = !isOne && !options.isJson;
        const std::string heading = fmt::format("{}{}:\n", i == 0 ? "" : "\n", inspect::Printable(file));
        try {
            status = std::max(status, ShowFile(options, file, hasHeading ? heading : ""));
        } catch (const inspect::FileError& error) {
            status = Complain(error);
        }
    }
    return status;
}

int ShowDiff(const Options& options)
{
    if (options.files.size() != 2) throw UseError("--diff takes two files");
    const inspect::Message a = ReadMessage(options, inspect::ReadCapture(options.files[0]));
    const inspect::Message b = ReadMessage(options, inspect::ReadCapture(options.files[1]));
    if (a.record != b.record)
        throw UseError(fmt::format("--diff compares messages of one record; these are {} and {}",
                                   inspect::Printable(a.record), inspect::Printable(b.record)));
    Print(inspect::Diff(a, b, LookOf(options)));
    return StatusOf(std::max(a.IsA(), b.IsA()));
}

int Encode(const Options& options)
{
    if (options.output.empty()) throw UseError("--encode needs --output");
    const inspect::ByteString json = inspect::ReadBytes(options.encode, inspect::mostJsonBytes);
    try {
        const inspect::Capture capture = inspect::Encode({reinterpret_cast<const char*>(json.data()), json.size()});
        const inspect::ByteString frame = inspect::FrameOf(capture);
        inspect::WriteFile(options.output, {reinterpret_cast<const char*>(frame.data()), frame.size()});
    } catch (const inspect::EncodeError& error) {
        throw UseError(fmt::format("{}: {}", inspect::Printable(options.encode), error.what()));
    }
    return 0;
}

int Run(const Options& options)
{
    const bool isShown = !options.isJson && options.map.empty() && options.html.empty();
    if (!options.encode.empty()) {
        const bool isAlone = options.files.empty() && options.record.empty() && !options.isDiff && !options.follows &&
                             !options.showsSecrets && !options.start && !options.top && !options.elements && isShown;
        if (!isAlone) throw UseError("--encode goes with --output alone");
        return Encode(options);
    }
    if (!options.output.empty()) throw UseError("--output goes with --encode");
    if (options.files.empty()) throw UseError("no file is given; --help says what can be");
    if (options.isDiff) {
        if (!isShown || !options.record.empty() || options.follows)
            throw UseError("--diff goes with two captures alone");
        return ShowDiff(options);
    }
    if (options.follows && !(options.files.size() == 1 && std::filesystem::is_directory(options.files[0])))
        throw UseError("--follow takes one directory");
    if (options.record.empty()) return ShowFiles(options);
    const inspect::Message message = ReadMessage(options, RawCapture(options));
    Show(options, message);
    return StatusOf(message.IsA());
}

// Digits and nothing else: a minus is none.
CLI::Validator Number(std::size_t least, std::size_t most)
{
    const auto complaint = [=](const std::string& text) {
        std::size_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isNumber = error == std::errc() && end == text.data() + text.size();
        return isNumber && number >= least && number <= most
                   ? std::string()
                   : fmt::format("{} is no number from {} to {}", text, least, most);
    };
    return CLI::Validator(complaint, "");
}

void AddOptions(CLI::App& app, Options& options)
{
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", VYN_INSPECT_VERSION, "Print the version and exit");
    app.add_option("FILE", options.files, "A captured message, or a directory of them, which is listed")->type_name("");
    app.add_option("--record", options.record,
                   "The two files hold the raw wire structure and the raw arena of this record")
        ->type_name("NAME");
    app.add_option("--start", options.start, "The arena began N bytes past a multiple of 8")
        ->type_name("N")
        ->check(Number(0, 7));
    app.add_option("--top", options.top, "Only the first N bytes of the arena are in use")
        ->type_name("N")
        ->check(Number(0, inspect::mostArenaBytes));
    app.add_option("--elements", options.elements, "Show N elements of each array")
        ->type_name("N")
        ->check(Number(1, mostFields));
    app.add_flag("--secrets", options.showsSecrets, "Show passwords");
    app.add_flag("--json", options.isJson, "Print JSON, for programs");
    app.add_option("--map", options.map, "Draw the bytes as a picture")->type_name("OUT.svg");
    app.add_option("--html", options.html, "Write a page with the fields beside the bytes")->type_name("OUT.html");
    app.add_flag("--diff", options.isDiff, "Show two messages of one record side by side");
    app.add_flag("--follow", options.follows, "List what comes into the directory, until ^C");
    app.add_option("--encode", options.encode, "Make a message of JSON as --json prints it")->type_name("IN.json");
    app.add_option("-o,--output", options.output, "The file to write that message to")->type_name("OUT.vyn");
    app.footer("Exit status: 0 where a writer of the library would have written the message, 1 where readers tolerate\n"
               "what is wrong with it, 2 where they refuse it, 64 where the program was used wrongly.");
}

int Main(int argc, char** argv)
{
    Options options;
    CLI::App app("Shows captured messages of the Vyn connector: their fields, their bytes and their faults.",
                 "vyn-inspect");
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) { // help and version
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        throw UseError(inspect::Printable(error.what()) + "; --help says what can be given");
    }
    const int status = Run(options);
    if (std::fflush(stdout) != 0) throw std::runtime_error("the output cannot be written");
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        return Complain(error);
    }
}
