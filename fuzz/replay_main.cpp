// Calls the target's body with every file of the folders given, and with no bytes at all.
#include "target.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv)
{
    std::size_t count = 0;
    Check(nullptr, 0);
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            std::fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the one that fails
            Check(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
