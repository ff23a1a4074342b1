#include "host/sha256.h"

#include "host/descriptor.h"
#include "host/interrupt.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <stdexcept>
#include <vector>

namespace exchange {

namespace {

void Check(int result)
{
    if (result != 1) throw std::runtime_error("SHA-256 is not available");
}

} // namespace

Sha256::Sha256() : context_(EVP_MD_CTX_new())
{
    Check(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

void Sha256::Add(const void* data, std::size_t size)
{
    Check(EVP_DigestUpdate(context_.get(), data, size));
}

Sha256::Digest Sha256::SoFar() const
{
    const Sha256 copy; // finishing ends what a context can do
    Check(EVP_MD_CTX_copy_ex(copy.context_.get(), context_.get()));
    Digest digest{};
    Check(EVP_DigestFinal_ex(copy.context_.get(), digest.data(), nullptr));
    return digest;
}

Sha256::Digest Sha256::OfFile(int descriptor, const std::string& path)
{
    Sha256 sha;
    std::vector<char> buffer(std::size_t{1} << 18);
    off_t offset = 0;
    ssize_t count = 0;
    while ((count = pread(descriptor, buffer.data(), buffer.size(), offset)) != 0) {
        if (count < 0) RaiseErrno(path);
        CheckInterrupt();
        sha.Add(buffer.data(), static_cast<std::size_t>(count));
        offset += count;
    }
    return sha.SoFar();
}

void Sha256::Free::operator()(evp_md_ctx_st* context) const
{
    EVP_MD_CTX_free(context);
}

std::string ToHex(const Sha256::Digest& digest)
{
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

} // namespace exchange
