// ravlin-host: loads RavlinNativeLin64.so exactly as the platform does and
// shows what it answers and raises.
#include <iostream>

#include "Command.h"

int main(int argc, char** argv)
{
    const Command commands[] = {infoCommand(), paramsCommand(), listenCommand(),
                                testCommand(), portsCommand(),  demoCommand(),
                                udevRuleCommand(), doctorCommand()};
    CLI::App app{"Drives the input-device driver add-in without the platform."};
    app.require_subcommand(1);
    std::function<int()> run;
    for (const Command& command : commands) {
        CLI::App* sub = app.add_subcommand(command.name, command.help);
        auto action = command.setup(*sub);
        sub->callback([&run, action] { run = action; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        // Help asked for is no error; every other parse failure is a usage error.
        return app.exit(e) == 0 ? 0 : 2;
    }
    try {
        return run();
    } catch (const std::exception& e) {
        std::cerr << "ravlin-host: " << e.what() << "\n";
        return 2;
    }
}
