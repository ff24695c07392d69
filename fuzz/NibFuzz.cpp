// fuzz/NibFuzz.cpp
//
// Any bytes as a nib file: either records come out, whole, or a problem with a place inside the file.
#include <algorithm>
#include <cstdlib>

#include "platform/hitoolbox/nib/NibReader.h"

namespace {

// Reads all that the records hold, for the sanitizers to see; answers how deep they go.
int Visit(const NibControl& control)
{
    int depth = 0;
    for (const NibControl& child : control.children)
        depth = std::max(depth, Visit(child));
    for (const NibTabItem& tab : control.tabs) {
        if (tab.pane && *tab.pane >= control.children.size())
            std::abort();
    }
    return depth + 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    NibProblem problem;
    const auto document = ReadNib({reinterpret_cast<const char*>(data), size}, problem);
    if (!document && (problem.message.empty() || problem.offset > size))
        std::abort();
    if (!document)
        return 0;
    for (const std::string& name : document->WindowNames()) {
        NibLookup result = NibLookup::NoSuchObject;
        const NibWindow* const window = document->FindWindow(name, result);
        if (!window || result != NibLookup::Found || Visit(window->root) > kMaximumNibDepth + 1)
            std::abort();
    }
    return 0;
}
