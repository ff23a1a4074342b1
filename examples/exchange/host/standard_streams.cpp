#include "host/standard_streams.h"

#include "host/descriptor.h"
#include "host/files.h"

#include <fcntl.h>

#include <csignal>

namespace exchange {

void PrepareStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) != stream) RaiseErrno("/dev/null");
    std::signal(SIGPIPE, SIG_IGN);
}

void WriteOutput(std::string_view text)
try {
    WriteAll(STDOUT_FILENO, "standard output", text.data(), text.size());
} catch (const std::system_error& error) {
    if (error.code() == std::errc::broken_pipe) throw OutputClosed();
    throw;
}

void FinishOutput()
{
    const int copy = dup(STDOUT_FILENO);
    if (copy < 0 || close(copy) != 0) RaiseErrno("standard output");
}

} // namespace exchange
