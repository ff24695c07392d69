// platform/corefoundation/Bundle.h
//
// The bundle object, and how resources are found in it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/Object.h"
#include <CoreFoundation/CFBundle.h>

/// Where a resource is looked for first.
enum class ResourceOrder {
    PlainFirst,    ///< In the resources folder itself, then in the language folders.
    LocalisedFirst ///< The other way round.
};

struct __CFBundle final : CObject {
    __CFBundle(std::string folderPath, dev_t folderDevice, ino_t folderNode)
        : device(folderDevice), node(folderNode), m_path(std::move(folderPath))
    {
    }
    ~__CFBundle() override;

    TypeId Type() const noexcept override { return TypeId::Bundle; }
    std::string Describe() const override { return Path(); }

    /// Answers the folder's absolute path, without a slash at its end. Where the folder is gone
    /// and its code is loaded, the code tells its new place.
    std::string Path() const;

    /// Answers the path of a resource; empty when it is not there.
    std::string FindResource(std::string_view name, std::string_view type, std::string_view subFolder,
                             ResourceOrder order) const;

    /// The same, telling also what is there through `status`.
    std::string FindResource(std::string_view name, std::string_view type, std::string_view subFolder,
                             ResourceOrder order, struct stat& status) const;

    const dev_t device;
    const ino_t node;

    std::mutex mutex;                       // guards what follows
    CRef<const __CFDictionary> information; // Info.plist, once read
    bool informationRead = false;
    void* code = nullptr; // what dlopen gave

private:
    std::string LastKnownPath() const;

    mutable std::mutex m_pathMutex;
    mutable std::string m_path;
};
