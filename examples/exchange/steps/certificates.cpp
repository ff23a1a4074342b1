// Step 5: the certificates of a folder, in batches as large as a list may be, and a record about all of them. A file
// that cannot be sent is left out, and the console says which one and why.
#include "host/files.h"
#include "steps/conversation.h"
#include "steps/field_limits.h"
#include "steps/show.h"

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace exchange {

namespace {

using Certificates = std::vector<vyn_connector::ClientCertInfo>;

constexpr std::tuple labels = {
    Label<&vyn_connector::ClientCertParams::field1>{"folder"},
    Label<&vyn_connector::ClientCertParams::field2>{"subjects"},
    Label<&vyn_connector::ClientCertParams::field3>{"all were sent"},
    Label<&vyn_connector::ClientCertParams::field4>{"certificates"},
};

constexpr std::size_t textLimit = limitOf<&vyn_connector::ClientCertInfo::field2>;

std::vector<std::string> CertificateFiles(const std::string& folder)
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".pem" || entry.path().extension() == ".crt") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Of the first certificate in the text; empty where there is none.
std::string SubjectOf(const std::string& pem)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> input(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                          &BIO_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(input.get(), nullptr, nullptr, nullptr), &X509_free);
    if (certificate == nullptr) return "";
    const std::unique_ptr<BIO, decltype(&BIO_free)> output(BIO_new(BIO_s_mem()), &BIO_free);
    X509_NAME_print_ex(output.get(), X509_get_subject_name(certificate.get()), 0,
                       XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB));
    char* text = nullptr;
    const long size = BIO_get_mem_data(output.get(), &text);
    return std::string(text, static_cast<std::size_t>(size));
}

// Throws with the reason where the file cannot be sent.
vyn_connector::ClientCertInfo Read(const std::string& path, std::uint32_t number)
{
    const std::uintmax_t size = std::filesystem::file_size(path);
    if (size > textLimit)
        throw std::runtime_error(fmt::format("{}: {} bytes are over the limit of {}", path, size, textLimit));
    vyn_connector::ClientCertInfo certificate;
    certificate.field1 = number;
    certificate.field2 = ReadFile(path);
    certificate.field3 = SubjectOf(certificate.field2);
    certificate.field4 = std::filesystem::path(path).filename();
    if (certificate.field3.empty()) throw std::runtime_error(path + ": there is no certificate in it");
    return certificate;
}

} // namespace

void SendCertificates(Session& session)
{
    const std::string& given = session.options.certificates;
    const std::string folder = given.empty() ? PathBelow(session.options.root, "etc/ssl/certs") : given;
    std::vector<std::string> paths;
    if (given.empty() && !std::filesystem::exists(folder))
        session.console.Line(folder + ": there is no such folder");
    else
        paths = CertificateFiles(folder);

    vyn_connector::ClientCertParams summary;
    summary.field1 = folder;
    summary.field3 = true; // all that there were
    Certificates batch;
    for (const std::string& path : paths) {
        try {
            batch.push_back(Read(path, summary.field4 + 1));
            summary.field2 += batch.back().field3 + "\n";
            ++summary.field4;
        } catch (const std::exception& error) {
            session.console.Line(fmt::format("not sent: {}", error.what()));
            summary.field3 = false;
        }
        if (batch.size() == itemLimitOf<Certificates>) {
            session.channel.Send(batch);
            batch.clear();
        }
    }
    if (!batch.empty() || summary.field4 == 0) session.channel.Send(batch);
    session.channel.SendEnd();
    CutToLimits(summary, "ClientCertParams", [&](const std::string& line) { session.console.Line(line); });
    session.channel.Send(summary);
}

void ReceiveCertificates(Session& session)
{
    std::size_t count = 0;
    while (const auto batch = session.channel.ReceiveOrEnd<Certificates>()) {
        ShowSizes(session.console, *batch);
        if (!batch->record.empty())
            session.console.Line(fmt::format("  {}, the first is of {}", Amount(batch->record.size(), "certificate"),
                                             batch->record.front().field3));
        count += batch->record.size();
    }
    const auto summary = session.channel.Receive<vyn_connector::ClientCertParams>();
    Show(session.console, summary, labels);
    if (summary.record.field4 != count)
        throw std::runtime_error(
            fmt::format("the peer announces {} certificates and sent {}", summary.record.field4, count));
}

} // namespace exchange
