// Two processes exchange records: the connector sends, the server prints what it got. Without a subcommand this
// program is both; with one, each is started by hand.
#include "connection.h"
#include "unix_socket.h"

#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace {

using namespace exchange;

constexpr int exitFailure = 1;
constexpr int exitPeerGone = 2;

// Runs one side, and turns whatever it throws into one line and a status.
template <typename Talk>
int Run(const char* side, bool peerIsOurs, Talk talk)
{
    Console console(side);
    try {
        talk(console);
        return EXIT_SUCCESS;
    } catch (const PeerGone& error) {
        // Where both sides are ours, the other one has said what was wrong.
        if (!peerIsOurs) console.Error(error.what());
        return exitPeerGone;
    } catch (const std::exception& error) {
        console.Error(error.what());
        return exitFailure;
    }
}

int RunBoth(const Options& options)
{
    auto ends = UnixSocket::Pair();
    UnixSocket& serverEnd = ends.first;
    UnixSocket& connectorEnd = ends.second;
    const pid_t connector = fork();
    if (connector < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (connector == 0) {
        serverEnd.Close();
        _exit(Run("connector", true, [&](Console& console) {
            Channel channel(connectorEnd);
            SendConnection(channel, console, options);
        }));
    }
    connectorEnd.Close();
    const int serverStatus = Run("server", true, [&](Console& console) {
        Channel channel(serverEnd);
        ReceiveConnection(channel, console);
    });
    serverEnd.Close();

    int connectorStatus = 0;
    waitpid(connector, &connectorStatus, 0);
    if (WIFSIGNALED(connectorStatus)) {
        Console("connector").Error(fmt::format("killed by signal {}", WTERMSIG(connectorStatus)));
        return exitFailure;
    }
    return WEXITSTATUS(connectorStatus) == 0 && serverStatus == 0 ? EXIT_SUCCESS : exitFailure;
}

} // namespace

int main(int argc, char** argv)
try {
    Options options;
    options.settings = std::filesystem::read_symlink("/proc/self/exe").replace_filename("connection.json");
    std::string path;

    CLI::App app("Sends a connector's records from one process to another and prints them there.");
    app.add_option("--settings", options.settings, "The connector's JSON file")
        ->option_text("FILE (connection.json beside the program)");
    app.add_option("--proxy", options.proxy, "The proxy's URL")->option_text("URL (that of the environment)");
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
        fmt::print(stderr, "exchange: there are arguments too many; see --help\n");
        return exitFailure;
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }

    if (*serve)
        return Run("server", false, [&](Console& console) {
            UnixSocket socket = UnixSocket::Accept(path);
            Channel channel(socket);
            ReceiveConnection(channel, console);
        });
    if (*connect)
        return Run("connector", false, [&](Console& console) {
            UnixSocket socket = UnixSocket::Connect(path);
            Channel channel(socket);
            SendConnection(channel, console, options);
        });
    return RunBoth(options);
} catch (const std::exception& error) {
    fmt::print(stderr, "exchange: {}\n", error.what());
    return exitFailure;
}
