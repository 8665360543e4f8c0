#pragma once
// One subcommand of ravlin-host: its name and help line, and a set-up that
// declares its options and returns what runs it. main.cpp lists them all in
// one table, so help and dispatch cannot disagree.
#include <CLI/CLI.hpp>

#include <functional>

struct Command {
    const char* name;
    const char* help;
    std::function<std::function<int()>(CLI::App&)> setup;
};

Command infoCommand();
Command paramsCommand();
Command listenCommand();
Command testCommand();
Command portsCommand();
Command demoCommand();
Command udevRuleCommand();
Command doctorCommand();
