#include "listing.h"

#include "printable.h"
#include "progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace inspect {

namespace {

// How long a file is waited for that is not whole: its writer may still be at it.
constexpr std::chrono::seconds mostWait{1};
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
        throw FileError(directory, error.code().message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Print(const std::string& line)
{
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
}

bool IsYoung(const std::filesystem::path& file)
{
    std::error_code none;
    const auto age = std::filesystem::file_time_type::clock::now() - std::filesystem::last_write_time(file, none);
    return !none && age < mostWait && age > -mostWait; // a clock that is wrong keeps nobody waiting
}

// What the lines need, and no more.
constexpr Extent noTree{0, 0, 0};

// The number and the direction, as the file's name has them.
std::string Beginning(const std::filesystem::path& file)
{
    const std::string stem = file.stem().string();
    const std::size_t first = stem.find('-');
    const std::size_t second = stem.find('-', first + 1);
    const bool isNumbered = first != std::string::npos && second != std::string::npos;
    const std::string number = isNumbered ? stem.substr(0, first) : stem;
    const std::string direction = isNumbered ? stem.substr(first + 1, second - first - 1) : "";
    return fmt::format("{}  {:<8}", Printable(number), Printable(direction));
}

class Listing {
public:
    Listing(bool follows, const Look& look) : follows_(follows), look_(look) {}

    // Of those that were not seen before.
    void Show(const std::vector<std::filesystem::path>& files)
    {
        Progress progress;
        for (std::size_t i = 0; i < files.size() && isOver == 0; ++i) {
            if (seen_.count(files[i]) != 0) continue;
            progress.Show(i, files.size());
            if (const std::optional<std::string> line = LineOf(files[i])) {
                seen_.insert(files[i]);
                Print(*line);
            }
        }
    }
    const Listed& Result() const { return listed_; }

private:
    // Nothing of a file that is still being written.
    std::optional<std::string> LineOf(const std::filesystem::path& file)
    {
        try {
            std::error_code none;
            const std::filesystem::file_status status = std::filesystem::status(file, none);
            if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
                return fmt::format("{}  not read: no regular file", Beginning(file));
            const Capture capture = ReadCapture(file);
            if (follows_ && !capture.damage.empty() && IsYoung(file)) return std::nullopt;
            const Message message = Inspect(capture, noTree);
            listed_.worst = std::max(listed_.worst, message.IsA());
            return ListingLine(file, message, look_);
        } catch (const FileError& error) {
            listed_.isWhole = false;
            return fmt::format("{}  not read: {}", Beginning(file), error.Reason());
        }
    }

    const bool follows_;
    const Look& look_;
    std::set<std::filesystem::path> seen_;
    Listed listed_;
};

} // namespace

std::string ListingLine(const std::filesystem::path& file, const Message& message, const Look& look)
{
    const Standing standing = message.IsA();
    std::string words(NameOf(standing));
    if (standing != Standing::Canonical)
        words = fmt::format("{} ({})", words, Amount(message.refused + message.tolerated, "fault"));
    if (look.isColoured && standing != Standing::Canonical)
        words = fmt::format("\x1b[{}m{}\x1b[0m", standing == Standing::Refused ? "1;31" : "33", words);
    return fmt::format("{}  {:<28}  wire {:>3}  arena {:>7}  {}", Beginning(file), Printable(message.record),
                       message.wire.size(), message.arena.size(), words);
}

Listed List(const std::filesystem::path& directory, bool follows, const Look& look)
{
    if (follows) {
        std::signal(SIGINT, EndFollowing);
        std::signal(SIGTERM, EndFollowing);
    }
    Listing listing(follows, look);
    do {
        listing.Show(CapturesIn(directory));
        if (follows) std::fflush(stdout);
        if (follows && isOver == 0) std::this_thread::sleep_for(between);
    } while (follows && isOver == 0);
    return listing.Result();
}

} // namespace inspect
