// Two processes hold a connector's conversation: the connector reports and gives away a file, the server prints what
// it gets and fetches the file. Without a subcommand this program is both; with one, each is started by hand.
#include "host/interrupt.h"
#include "host/standard_streams.h"
#include "steps/conversation.h"
#include "steps/message_around.h"
#include "transport/unix_socket.h"

#include <CLI/CLI.hpp>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace {

using namespace exchange;

constexpr int exitFailure = 1;
constexpr int exitPeerGone = 2;
constexpr int exitSignal = 128; // and the signal's number, as a shell has it

enum class Side { Connector, Server };

// Holds one side of the conversation over a socket that `connect` provides, and turns whatever is thrown into one line
// and a status. Where both sides are ours, the one that has no fault of its own says nothing: the other one does.
template <typename Connect>
int Run(Side side, bool peerIsOurs, const Options& options, Connect connect)
{
    Console console(side == Side::Server ? "server" : "connector", options.json);
    try {
        UnixSocket socket = connect();
        socket.SetTimeout(options.timeoutSeconds);
        // In a common run, one of the two sees every message.
        std::optional<Capture> capture;
        if (!options.capture.empty() && !(peerIsOurs && side == Side::Server)) capture.emplace(options.capture);
        Channel channel(socket, capture ? &*capture : nullptr);
        Session session{channel, console, options, peerIsOurs};
        if (side == Side::Server)
            TalkAsServer(session);
        else
            TalkAsConnector(session);
        FinishOutput();
        return EXIT_SUCCESS;
    } catch (const Interrupted& error) {
        console.Error(error.what());
        return exitSignal + error.Signal();
    } catch (const OutputClosed&) {
        return exitSignal + SIGPIPE;
    } catch (const PeerSilent& error) {
        console.Error(error.what());
        return exitPeerGone;
    } catch (const PeerGone& error) {
        if (!peerIsOurs) console.Error(error.what());
        return exitPeerGone;
    } catch (const PeerRefused& error) {
        if (!peerIsOurs) console.Error(error.what());
        return exitPeerGone;
    } catch (const std::exception& error) {
        console.Error(error.what());
        return exitFailure;
    }
}

// Waits until the connector has ended. It has said all that it has to say, or has lost its peer: it ends by itself now,
// unless it is stopped or stuck. Returns its status.
int EndOf(pid_t connector, const Options& options)
{
    constexpr int patienceMilliseconds = 5000;
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, connector, 0)), "pidfd_open");
    pollfd end{process.Get(), POLLIN, 0};
    const bool isStuck = poll(&end, 1, patienceMilliseconds) != 1;
    if (isStuck) kill(connector, SIGKILL);

    int status = 0;
    while (waitpid(connector, &status, 0) < 0 && errno == EINTR) {
    }
    if (isStuck) return exitPeerGone;
    if (!WIFSIGNALED(status)) return WEXITSTATUS(status);
    Console("connector", options.json).Error(fmt::format("killed by signal {}", WTERMSIG(status)));
    return exitFailure;
}

// Signals are the server's business: it knows what has been received. The connector ends when the server is gone.
int RunBoth(const Options& options)
{
    auto ends = UnixSocket::Pair();
    UnixSocket& serverEnd = ends.first;
    UnixSocket& connectorEnd = ends.second;
    const pid_t connector = fork();
    if (connector < 0) RaiseErrno("fork");
    if (connector == 0) {
        IgnoreInterrupts();
        serverEnd.Close();
        _exit(Run(Side::Connector, true, options, [&] { return std::move(connectorEnd); }));
    }
    NoticeInterrupts();
    connectorEnd.Close();
    const int serverStatus = Run(Side::Server, true, options, [&] { return std::move(serverEnd); });
    const int connectorStatus = EndOf(connector, options);

    // The side that has lost its peer is not the one that tells why.
    const bool connectorTells =
        serverStatus == EXIT_SUCCESS || (serverStatus == exitPeerGone && connectorStatus != EXIT_SUCCESS);
    return connectorTells ? connectorStatus : serverStatus;
}

} // namespace

int main(int argc, char** argv)
try {
    PrepareStandardStreams();
    std::signal(SIGXFSZ, SIG_IGN); // a file over the limit is an error like any other
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    Options options;
    options.settings = std::filesystem::path(program).replace_filename("connection.json");
    options.file = program;
    std::string path;

    CLI::App app("A connector and its server exchange every record that there is, with this machine's data.");
    app.option_defaults()->always_capture_default(false);
    app.add_option("--settings", options.settings,
                   "The connector's JSON file; without it, connection.json beside the program")
        ->option_text("FILE");
    app.add_option("--proxy", options.proxy, "The proxy's URL; without it, what https_proxy says")->option_text("URL");
    app.add_option("--root", options.root, "Where the connector finds the machine's files; without it, /")
        ->option_text("DIR");
    app.add_option("--log", options.log,
                   "The log file whose last lines are sent as events; without it, one of /var/log")
        ->option_text("FILE");
    app.add_option("--certificates", options.certificates,
                   "The folder of the certificates (*.pem, *.crt); without it, /etc/ssl/certs")
        ->option_text("DIR");
    app.add_option("--file", options.file, "The file that is transferred; without it, this program")
        ->option_text("FILE");
    app.add_option("--into", options.destination, "The directory into which the server puts it; without it, ./received")
        ->option_text("DIR");
    app.add_flag("--resume", options.resume,
                 "Go on with a transfer that was interrupted, whose beginning is NAME.part");
    app.add_option("--record", options.record, "Only one step, by its name or that of one of its records")
        ->option_text("NAME")
        ->check([](const std::string& name) {
            const std::vector<std::string> names = StepNames();
            const bool known = std::find(names.begin(), names.end(), name) != names.end();
            if (known) return std::string();
            const std::string_view message = MessageAround(name);
            if (!message.empty()) return fmt::format("{0} travels inside {1}; --record {1} shows it", name, message);
            return fmt::format("there is no step or record {}", name);
        });
    app.add_option("--capture", options.capture,
                   "Write each message to a file in this directory, passwords too; it has to be new or empty")
        ->option_text("DIR");
    app.add_flag("--json", options.json, "Print nothing but the closing table, as a line of JSON");
    app.add_option("--timeout", options.timeoutSeconds, "Seconds until a silent peer is given up; 0: never")
        ->option_text("SECONDS (300)");
    app.add_flag("--any-user", options.anyUser, "Send to a server of another user as well, passwords too");
    app.set_version_flag("--version", "exchange " EXCHANGE_VERSION);
    std::string footer = "The steps and their records:";
    for (const Step& step : Steps())
        footer += fmt::format("\n  {:<15}{}", step.name, fmt::join(step.records, ", "));
    footer += "\n\nThe status is 0 when all went well, 1 when something that was given cannot be used, 2 when the peer "
              "is gone or "
              "silent, 130 after ^C, 143 after SIGTERM, and 141 when nobody reads the output any more.";
    app.footer(footer);
    app.require_subcommand(0, 1);
    app.fallthrough();
    CLI::App* const serve = app.add_subcommand("serve", "Only the server: waits at a Unix domain socket");
    serve->add_option("path", path, "The socket's path")->required();
    CLI::App* const connect = app.add_subcommand("connect", "Only the connector: connects to a server");
    connect->add_option("path", path, "The socket's path")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ExtrasError&) {
        // Its text quotes the arguments, among which there may be a password.
        Console::ProgramError("there are arguments too many; see --help");
        return exitFailure;
    } catch (const CLI::CallForVersion& version) {
        Console::ProgramText(version.what());
        return EXIT_SUCCESS;
    } catch (const CLI::Success&) {
        Console::ProgramText(app.help());
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError& error) {
        Console::ProgramError(fmt::format("{}; see --help", error.what()));
        return exitFailure;
    }

    if (!*serve && !*connect) return RunBoth(options);
    NoticeInterrupts();
    if (*serve) return Run(Side::Server, false, options, [&] { return UnixSocket::Accept(path); });
    return Run(Side::Connector, false, options, [&] { return UnixSocket::Connect(path, options.anyUser); });
} catch (const OutputClosed&) {
    return exitSignal + SIGPIPE;
} catch (const std::exception& error) {
    Console::ProgramError(error.what());
    return exitFailure;
}
