// tests/support/Owner.h
//
// Owners of Core Foundation references for tests.
#pragma once

#include <memory>
#include <type_traits>

#include "tests/support/Support.h"

struct Releaser {
    void operator()(const void* reference) const { CFRelease(reference); }
};
template <typename Ref>
using Owner = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

/// Takes over what a Create or Copy call answered; null is fine.
template <typename Ref>
Owner<Ref> Own(Ref reference)
{
    return Owner<Ref>(reference);
}
