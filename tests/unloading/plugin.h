// What a plugin that uses the library shows to the program that loads it.
#pragma once

#include <exception>

struct PluginReport {
    bool constantsAreThere = false;
    bool recordsConvert = false;
};

struct Plugin {
    PluginReport whileLoading;         // what its static object found when it was built
    PluginReport* whileUnloading;      // where that object puts what it finds when it is destroyed
    std::exception_ptr (*raise)();     // an argument error, alive until the pointer is dropped
    bool (*knows)(std::exception_ptr); // whether it is that error, with its file, line and text
};

// The plugin's only symbol, a Plugin.
inline constexpr const char* pluginSymbol = "unloading_plugin";
