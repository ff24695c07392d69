// tools/quillets/Command.h
//
// What the commands of `quillets` share: their shape, their exit codes and their options.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the program exits with.
enum ExitCode {
    kExitOk = 0,
    kExitFailed = 1, ///< What was asked for could not be done; one line on stderr says why.
    kExitUsage = 2   ///< The arguments are wrong; one line on stderr says how.
};

/// What stood on the command line in front of and behind the command's name.
struct Arguments {
    std::string bundlePath;              ///< --bundle PATH; empty for the usual places.
    std::vector<std::string_view> words; ///< What follows the command, options included.
};

/// One command. `run` answers an exit code.
struct Command {
    std::string_view name;
    std::string_view summary; ///< One line.
    std::string_view help;    ///< What `--help` prints, complete.
    int (*run)(const Arguments& arguments);
};

extern const Command kIdentityCommand;
extern const Command kDoctorCommand;
extern const Command kHelpCommand;
extern const Command kInfoCommand;
extern const Command kPrefsCommand;
extern const Command kPictureCommand;
extern const Command kNibCommand;

/// Takes `option` out of the words; false where it is not there.
bool TakeFlag(std::vector<std::string_view>& words, std::string_view option);
/// Prints one line on stderr, beginning with the program's name, and answers kExitUsage.
int UsageError(std::string_view command, std::string_view message);
/// Prints one line on stderr, beginning with the program's name, and answers kExitFailed.
int Failure(std::string_view message);
