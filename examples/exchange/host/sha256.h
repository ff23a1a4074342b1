// SHA-256, as libcrypto computes it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace exchange {

class Sha256 {
public:
    using Digest = std::array<std::uint8_t, 32>;

    Sha256();
    void Add(const void* data, std::size_t size);
    Digest SoFar() const; // more can be added afterwards

    // Of a file's whole content, in constant memory. `path` is for the error's text. Throws std::system_error, or
    // Interrupted.
    static Digest OfFile(int descriptor, const std::string& path);

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

std::string ToHex(const Sha256::Digest& digest);

} // namespace exchange
