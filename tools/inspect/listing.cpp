#include "listing.h"

#include "printable.h"
#include "progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <map>
#include <set>
#include <thread>
#include <vector>

namespace inspect {

namespace {

// How often a file is looked at again that is not whole yet.
constexpr int mostLooks = 10;
constexpr std::chrono::milliseconds between{100};

volatile std::sig_atomic_t isOver = 0;

void EndFollowing(int)
{
    isOver = 1;
}

std::vector<std::filesystem::path> CapturesIn(const std::filesystem::path& directory)
{
    std::vector<std::filesystem::path> files;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            if (entry.path().extension() == ".vyn") files.push_back(entry.path());
    } catch (const std::filesystem::filesystem_error& error) {
        throw FileError(fmt::format("{}: {}", directory.string(), error.code().message()));
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Print(const std::string& line)
{
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
}

// What the lines need, and no more.
constexpr Extent noTree{0, 0, 0};

} // namespace

std::string ListingLine(const std::filesystem::path& file, const Message& message, const Look& look)
{
    const std::string stem = file.stem().string();
    const std::size_t first = stem.find('-');
    const std::size_t second = stem.find('-', first + 1);
    const bool isNumbered = first != std::string::npos && second != std::string::npos;
    const std::string number = isNumbered ? stem.substr(0, first) : stem;
    const std::string direction = isNumbered ? stem.substr(first + 1, second - first - 1) : "";
    const Standing standing = message.IsA();
    std::string words(NameOf(standing));
    if (standing != Standing::Canonical)
        words = fmt::format("{} ({})", words, Amount(message.refused + message.tolerated, "fault"));
    if (look.isColoured && standing != Standing::Canonical)
        words = fmt::format("\x1b[{}m{}\x1b[0m", standing == Standing::Refused ? "1;31" : "33", words);
    return fmt::format("{}  {:<8}  {:<28}  wire {:>3}  arena {:>7}  {}", Printable(number), Printable(direction),
                       Printable(message.record), message.wire.size(), message.arena.size(), words);
}

Standing List(const std::filesystem::path& directory, bool follows, const Look& look)
{
    std::set<std::filesystem::path> seen;
    std::map<std::filesystem::path, int> looks; // of files that were not whole
    Standing worst = Standing::Canonical;
    if (follows) {
        std::signal(SIGINT, EndFollowing);
        std::signal(SIGTERM, EndFollowing);
    }
    do {
        const std::vector<std::filesystem::path> files = CapturesIn(directory);
        Progress progress;
        for (std::size_t i = 0; i < files.size() && isOver == 0; ++i) {
            if (seen.count(files[i]) != 0) continue;
            progress.Show(i, files.size());
            const Capture capture = ReadCapture(files[i]);
            if (follows && !capture.damage.empty() && ++looks[files[i]] < mostLooks) break;
            seen.insert(files[i]);
            const Message message = Inspect(capture, noTree);
            worst = std::max(worst, message.IsA());
            Print(ListingLine(files[i], message, look));
        }
        if (follows) std::fflush(stdout);
        if (follows && isOver == 0) std::this_thread::sleep_for(between);
    } while (follows && isOver == 0);
    return worst;
}

} // namespace inspect
