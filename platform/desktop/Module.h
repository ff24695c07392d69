// platform/desktop/Module.h
//
// The module beside the layer's library that knows the display and the drawing. What it stands on
// is loaded with it, at the first need, and under names that nobody else sees.
#pragma once

#include <string>

namespace Module {

/// Answers what the module exports under a name, loading it at the first call; null when it cannot
/// be loaded or lacks the name, and where descriptors are too short to begin with it. It stays
/// loaded: threads and sources of its libraries may remain.
void* Find(const char* name) noexcept;
/// Answers why the last call found nothing, as the loader says it; empty while nothing is known against it.
std::string Problem();

} // namespace Module
