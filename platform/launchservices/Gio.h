// platform/launchservices/Gio.h
//
// Owners of what GLib's calls answer, for the launcher's module.
#pragma once

#include <gio/gio.h>

#include <memory>

struct ObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
/// Owns one reference to a GObject.
template <typename T>
using GOwned = std::unique_ptr<T, ObjectUnref>;

struct MemoryFree {
    void operator()(void* memory) const { g_free(memory); }
};
using GText = std::unique_ptr<char, MemoryFree>;

struct ContextUnref {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
};
using GContext = std::unique_ptr<GMainContext, ContextUnref>;

struct VariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using GValueOwned = std::unique_ptr<GVariant, VariantUnref>;
