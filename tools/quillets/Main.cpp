// tools/quillets/Main.cpp
//
// The command line: finds the command and hands over.
#include <cstdio>

#include "tools/quillets/Command.h"
#include <CVPlatform/CVPlatform.h>

namespace {

const Command* const kCommands[] = {&kIdentityCommand, &kInfoCommand,    &kPrefsCommand, &kHelpCommand,
                                    &kNibCommand,      &kPictureCommand, &kDoctorCommand};

void PrintHelp()
{
    std::printf("Usage: quillets [--bundle PATH] COMMAND [ARGUMENT ...]\n"
                "\n"
                "Looks at and works with the product services that Corvane's plug-ins share.\n"
                "\n"
                "Commands:\n");
    for (const Command* command : kCommands)
        std::printf("  %-10.*s %.*s\n", static_cast<int>(command->name.size()), command->name.data(),
                    static_cast<int>(command->summary.size()), command->summary.data());
    std::printf("\n"
                "  --bundle PATH  use this bundle instead of the one beside the program\n"
                "  --help         print this; behind a command, what that command does\n"
                "  --version      print the version of this program\n"
                "\n"
                "Exit status: 0 done, 1 could not be done, 2 wrong arguments.\n");
}

// What was printed has to have arrived: a full disk or a closed pipe is a failure too.
int Finish(int code)
{
    const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return code == kExitOk && !written ? Failure("the output could not be written") : code;
}

int RunCommand(std::string_view name, Arguments arguments)
{
    for (const Command* command : kCommands) {
        if (command->name != name)
            continue;
        if (TakeFlag(arguments.words, "--help")) {
            std::printf("%.*s", static_cast<int>(command->help.size()), command->help.data());
            return kExitOk;
        }
        return command->run(arguments);
    }
    return UsageError("", "there is no command " + std::string(name));
}

int Run(const std::vector<std::string_view>& words)
{
    Arguments arguments;
    std::size_t at = 0;
    for (; at < words.size() && words[at].substr(0, 2) == "--"; ++at) {
        if (words[at] == "--help") {
            PrintHelp();
            return kExitOk;
        }
        if (words[at] == "--version") {
            std::printf("quillets %s\n", CVGetVersion());
            return kExitOk;
        }
        if (words[at] != "--bundle")
            return UsageError("", "unknown option " + std::string(words[at]));
        if (at + 1 == words.size() || words[at + 1].empty())
            return UsageError("", "--bundle needs a path");
        arguments.bundlePath = words[++at];
    }
    if (at == words.size())
        return UsageError("", "which command?");
    arguments.words.assign(words.begin() + static_cast<std::ptrdiff_t>(at) + 1, words.end());
    return RunCommand(words[at], arguments);
}

} // namespace

int main(int count, char** words)
{
    return Finish(Run(std::vector<std::string_view>(words + (count > 0 ? 1 : 0), words + count)));
}
