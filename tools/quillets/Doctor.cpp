// tools/quillets/Doctor.cpp
//
// `quillets doctor`: what the component finds on this machine, and what is missing.
#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Help.h"
#include "tools/quillets/Output.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr unsigned kKnobTopic = 300; // what the information dialog's Help button opens

// One finding a line; what is wrong is marked and counted.
class CReport {
public:
    void Say(const char* subject, const std::string& finding)
    {
        std::printf("  ok    %-12s %s\n", subject, Printable(finding).c_str());
    }
    void Miss(const char* subject, const std::string& finding)
    {
        ++m_missing;
        std::printf("MISSING %-12s %s\n", subject, Printable(finding).c_str());
    }
    int Missing() const { return m_missing; }

private:
    int m_missing = 0;
};

void ReportBundle(CReport& report, const LoadedBundle& loaded)
{
    if (!loaded.bundle) {
        report.Miss("bundle", loaded.problem);
        return;
    }
    report.Say("bundle", TakePath(CFBundleCopyBundleURL(loaded.bundle)));
    const std::string resources = TakePath(CFBundleCopyResourcesDirectoryURL(loaded.bundle));
    if (resources.empty())
        report.Miss("resources", "the bundle has no Contents/Resources");
    else
        report.Say("resources", resources);
    if (!CFBundleGetInfoDictionary(loaded.bundle))
        report.Miss("properties", "the bundle has no readable Contents/Info.plist");

    if (!loaded.manager) {
        report.Miss("image", loaded.problem);
        return;
    }
    Dl_info image = {};
    void* const factory = CFBundleGetFunctionPointerForName(loaded.bundle, CFSTR("GetLibProductManager"));
    report.Say("image", dladdr(factory, &image) != 0 ? image.dli_fname : "(unknown)");
    char own[PATH_MAX] = "";
    if (!loaded.manager->GetResourcesBundlePath(own, sizeof own))
        report.Miss("own place", "the component cannot find its own bundle");
}

void ReportHelp(CReport& report, const LoadedBundle& loaded)
{
    if (!loaded.manager)
        return;
    const HelpPage page = FindHelpPage(*loaded.manager, kKnobTopic);
    if (page.path.empty())
        report.Miss("help", "the bundle has no help pages");
    else if (access(page.path.c_str(), R_OK) != 0)
        report.Miss("help", "cannot be read: " + page.path);
    else
        report.Say("help", page.path);
    const std::string viewer = page.path.empty() ? "" : DescribeViewer(page);
    if (!viewer.empty())
        report.Say("help viewer", viewer);
    else if (!page.path.empty())
        report.Miss("help viewer", "no application opens HTML pages; set a default browser");
}

void ReportLayer(CReport& report)
{
    const char* const path = CVGetLibraryPath();
    report.Say("layer", std::string(CVGetVersion()) + (path ? std::string(" at ") + path : std::string()));
}

int Run(const Arguments& arguments)
{
    if (!arguments.words.empty())
        return UsageError("doctor", "unexpected argument " + std::string(arguments.words.front()));
    const LoadedBundle loaded = LoadBundle(arguments);
    CReport report;
    ReportBundle(report, loaded);
    ReportHelp(report, loaded);
    ReportLayer(report);
    return report.Missing() == 0 ? kExitOk : kExitFailed;
}

} // namespace

const Command kDoctorCommand = {"doctor", "check what the component finds on this machine and name what is missing",
                                "Usage: quillets [--bundle PATH] doctor\n"
                                "\n"
                                "Prints one line for each thing that the component needs, marked ok or MISSING.\n"
                                "\n"
                                "  --bundle PATH  check this bundle instead of the one beside the program\n"
                                "\n"
                                "Exit status: 0 nothing is missing, 1 something is, 2 wrong arguments.\n",
                                Run};
