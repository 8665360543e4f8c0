// ravlin-host udev-rule KEYBOARD: the udev rule that lets the user at the
// seat read the event nodes of one scanner model, and nothing else: matched
// by its USB vendor and product (every unit of the model), given to the
// seat's user through TAG+="uaccess" (never the input group, whose members
// can read every keyboard).
#include <iostream>

#include "Command.h"
#include "input/EvdevKeyboards.h"

namespace {

int printRule(const std::string& wanted)
{
    for (const EvdevKeyboard& keyboard : listEvdevKeyboards()) {
        if (!namesKeyboard(wanted, keyboard))
            continue;
        if (keyboard.ids.empty()) {
            std::cerr << "ravlin-host: " << keyboard.node << " (" << keyboard.name
                      << ") is not a USB device: a rule by vendor and product needs one\n";
            return 1;
        }
        const std::string vendor = keyboard.ids.substr(4, 4);
        const std::string product = keyboard.ids.substr(9, 4);
        std::cout << "# " << keyboard.name << " (" << keyboard.ids << ")\n"
                  << "# Save as /etc/udev/rules.d/70-ravlin-scanner-" << vendor << "-" << product
                  << ".rules, then run: udevadm control --reload && udevadm trigger\n"
                  << "SUBSYSTEM==\"input\", KERNEL==\"event*\", ATTRS{idVendor}==\"" << vendor
                  << "\", ATTRS{idProduct}==\"" << product << "\", TAG+=\"uaccess\"\n";
        return 0;
    }
    std::cerr << "ravlin-host: no keyboard named " << wanted << " (see ravlin-host ports)\n";
    return 1;
}

}  // namespace

Command udevRuleCommand()
{
    return {"udev-rule", "the udev rule giving the seat's user one scanner model (a name or usb:VVVV:PPPP from ports)",
            [](CLI::App& app) -> std::function<int()> {
                auto keyboard = std::make_shared<std::string>();
                app.add_option("KEYBOARD", *keyboard, "KeyboardDevice name or usb:VVVV:PPPP")->required();
                return [keyboard] { return printRule(*keyboard); };
            }};
}
