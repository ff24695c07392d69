// platform/files/Files.h
//
// References to files for the rest of the layer.
#pragma once

#include <optional>
#include <string>

#include <CarbonCore/Files.h>

/// Makes the reference of what is at `path`; empty where nothing is or the path is not absolute.
std::optional<FSRef> RefOfPath(const std::string& path);

/// Answers the absolute path behind a reference; nullopt for null, zeros and what is no reference.
/// What it names may be gone.
std::optional<std::string> PathOfRef(const FSRef* ref);
