// tools/quillets/Doctor.cpp
//
// `quillets doctor`: what the component finds on this machine, and what is missing.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Help.h"
#include "tools/quillets/Output.h"
#include "tools/quillets/Preferences.h"
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
    void Note(const char* subject, const std::string& finding)
    {
        std::printf("  note  %-12s %s\n", subject, Printable(finding).c_str());
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
    if (!path)
        return;
    // What of the layer is loaded at first use only, with libraries that may not be there.
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    for (const char* const name : {"libcvplatform-x11.so", "libcvplatform-image.so", "libcvplatform-launch.so"}) {
        if (dlopen((folder / name).c_str(), RTLD_NOW | RTLD_LOCAL)) {
            report.Say("module", name);
        } else {
            const char* const problem = dlerror();
            report.Miss("module", problem ? problem : name); // which says the file and why
        }
    }
}

// The settings' files: whether they can be read, who may, and what was put aside.
void ReportPreferences(CReport& report)
{
    const struct {
        const char* subject;
        CFStringRef user;
    } kScopes[] = {{"machine", kCFPreferencesAnyUser}, {"user", kCFPreferencesCurrentUser}};
    for (const auto& scope : kScopes) {
        const std::filesystem::path folder = std::filesystem::path(PreferencePath("Common", scope.user)).parent_path();
        std::error_code error;
        if (folder.empty()) {
            report.Miss(scope.subject, "no home: settings of this user cannot be kept");
            continue;
        }
        const bool writable = access(folder.c_str(), W_OK | X_OK) == 0;
        const bool exists = std::filesystem::exists(folder, error);
        report.Say(scope.subject, folder.string() + (!exists    ? " (not there yet)"
                                                     : writable ? " (writable)"
                                                                : " (not writable)"));
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            const std::string name = entry.path().filename().string();
            struct stat status = {};
            if (name.find(".plist.damaged-") != std::string::npos) {
                report.Note(scope.subject, "put aside: " + name);
            } else if (entry.path().extension() != ".plist") {
                continue;
            } else if (stat(entry.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
                       access(entry.path().c_str(), R_OK) != 0) {
                report.Miss(scope.subject, name + " cannot be read");
            } else {
                char mode[8] = "";
                std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(status.st_mode & 07777U));
                report.Say(scope.subject, name + ", " + std::to_string(status.st_size) + " bytes, mode " + mode);
            }
        }
    }
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
    ReportPreferences(report);
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
