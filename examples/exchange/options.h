// What the command line says.
#pragma once

#include <string>

namespace exchange {

struct Options {
    std::string settings;                 // the connector's JSON file
    std::string proxy;                    // URL; empty: that of the environment
    std::string root = "/";               // where the connector finds the machine's files
    std::string log;                      // empty: the first one that is found
    std::string certificates;             // directory; empty: the system's
    std::string file;                     // the file that is transferred
    std::string destination = "received"; // the directory into which the server puts it
    bool resume = false;
    std::string record;  // empty: all steps
    std::string capture; // directory; empty: none
    bool json = false;
    unsigned timeoutSeconds = 300; // 0: none
    bool anyUser = false;          // the connector sends to a server of another user as well
};

} // namespace exchange
