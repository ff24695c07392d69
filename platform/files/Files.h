// platform/files/Files.h
//
// References to files for the rest of the layer.
#pragma once

#include <optional>
#include <string>

#include <CarbonCore/Files.h>

/// How many of a reference's first bytes tell it from others; the rest are zeros.
constexpr std::size_t kRefContentSize = 24;

/// Makes the reference of what is at `path`; empty where nothing is or the path is not absolute.
std::optional<FSRef> RefOfPath(const std::string& path);

/// Makes the older kind of reference to the same file. Its name is for reading only: Mac OS Roman,
/// cut, with a question mark for what that lacks.
FSSpec SpecOfRef(const FSRef& ref, const std::string& path);
/// Answers the absolute path behind such a reference; nullopt for zeros and what is none.
std::optional<std::string> PathOfSpec(const FSSpec& spec);

/// Answers the absolute path behind a reference; nullopt for null, zeros and what is no reference.
/// What it names may be gone.
std::optional<std::string> PathOfRef(const FSRef* ref);
