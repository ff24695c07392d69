// platform/launchservices/Spawn.h
//
// Starting a program that the host shall never hear of again.
#pragma once

#include <string>
#include <vector>

/// Starts the file `program` with `arguments`, the first being the name it is called by.
///
/// The program is nobody's child here: the host need not reap it and gets no SIGCHLD for it, and no
/// other thread's wait meets it. It has a session of its own, /dev/null for input and output, no
/// other descriptor, no blocked or ignored signal, and the host's environment without what concerns
/// the host alone (LD_LIBRARY_PATH, LD_PRELOAD, tokens of its own start). No shell is involved.
/// @param folder  the working folder, or empty for the host's own.
/// @return 0, or the errno value of why it was not started. By then the program is running; what it
///         does is not waited for.
int StartProgram(const std::string& program, const std::vector<std::string>& arguments, const std::string& folder);
