// tools/quillets/Identity.cpp
//
// `quillets identity`: what the bundle says of itself.
#include <climits>
#include <cstdio>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Output.h"

namespace {

int Run(const Arguments& arguments)
{
    std::vector<std::string_view> words = arguments.words;
    const bool json = TakeFlag(words, "--json");
    if (!words.empty())
        return UsageError("identity", "unexpected argument " + std::string(words.front()));
    const LoadedBundle loaded = LoadBundle(arguments);
    if (!loaded.manager)
        return Failure(loaded.problem);

    IProductManager& manager = *loaded.manager;
    const CVProductVersion& version = *manager.GetProductVersion();
    char path[PATH_MAX] = "";
    (void)manager.GetResourcesBundlePath(path, sizeof path); // else it stays empty
    const std::string line = std::string(manager.TranslateCommon(kEffectLangInfoDialog, "Version", nullptr)) + " " +
                             std::to_string(version.major) + "." + std::to_string(version.minor) + " Build " +
                             std::to_string(version.build);
    if (json) {
        std::printf("{\"name\": %s, \"version\": %s, \"major\": %d, \"minor\": %d, \"build\": %d, "
                    "\"notice\": %s, \"bundle\": %s}\n",
                    JsonString(manager.GetProductName()).c_str(), JsonString(line).c_str(),
                    static_cast<int>(version.major), static_cast<int>(version.minor), static_cast<int>(version.build),
                    JsonString(version.notice).c_str(), JsonString(path).c_str());
        return kExitOk;
    }
    const std::pair<const char*, std::string> lines[] = {
        {"Name", manager.GetProductName()}, {"Version", line}, {"Build", std::to_string(version.build)},
        {"Notice", version.notice},         {"Bundle", path},
    };
    for (const auto& [label, text] : lines)
        std::printf("%-8s %s\n", label, Printable(text).c_str());
    return kExitOk;
}

} // namespace

const Command kIdentityCommand = {"identity", "print the product's name, version, build number, notice and place",
                                  "Usage: quillets [--bundle PATH] identity [--json]\n"
                                  "\n"
                                  "Loads the bundle as a plug-in would and prints what it says of itself.\n"
                                  "\n"
                                  "  --json         print one JSON object\n"
                                  "  --bundle PATH  use this bundle instead of the one beside the program\n"
                                  "\n"
                                  "Exit status: 0 printed, 1 the bundle cannot be loaded, 2 wrong arguments.\n",
                                  Run};
