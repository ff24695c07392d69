// tools/quillets/Output.h
//
// Text for people and for machines.
#pragma once

#include <string>
#include <string_view>

/// Answers a text as a JSON string, quotes included; bytes that are no UTF-8 become U+FFFD.
std::string JsonString(std::string_view text);

/// Answers a text that is safe on a terminal and stays one line: control characters are escaped.
std::string Printable(std::string_view text);
