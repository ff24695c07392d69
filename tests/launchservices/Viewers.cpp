// tests/launchservices/Viewers.cpp
//
// A desktop for tests of launching.
#include "tests/launchservices/Viewers.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace {

Visit VisitOf(const std::string& record)
{
    Visit visit;
    for (std::size_t at = 0; at < record.size();) {
        const char kind = record[at];
        const std::size_t colon = record.find(':', at);
        const std::size_t length = std::stoul(record.substr(at + 1, colon - at - 1));
        const std::string text = record.substr(colon + 1, length);
        at = colon + 1 + length;
        if (kind == 'a')
            visit.arguments.push_back(text);
        else if (kind == 'e')
            visit.environment.push_back(text);
        else if (kind == 'd')
            visit.descriptors.push_back(text);
        else
            (kind == 's' ? visit.status : kind == 'f' ? visit.folder : visit.session) = text;
    }
    return visit;
}

} // namespace

CViewers::CViewers()
    : m_dataHome("XDG_DATA_HOME", (m_folder / "data").c_str()),
      m_dataDirs("XDG_DATA_DIRS", (m_folder / "none").c_str()),
      m_configHome("XDG_CONFIG_HOME", (m_folder / "config").c_str()),
      m_configDirs("XDG_CONFIG_DIRS", (m_folder / "none").c_str()),
      m_path("PATH", (Programs() + ":" + std::getenv("PATH")).c_str()),
      m_bus("DBUS_SESSION_BUS_ADDRESS", nullptr)
{
    for (const char* folder : {"records", "bin", "config", "data/applications", "none"})
        std::filesystem::create_directories(m_folder / folder);
}

void CViewers::Install(const std::string& id, const std::string& codes, const std::string& more)
{
    InstallLine(id, Recorder() + " " + codes, more);
}

void CViewers::InstallLine(const std::string& id, const std::string& line, const std::string& more)
{
    WriteFile(Entry(id), "[Desktop Entry]\nType=Application\nName=Viewer " + id + "\nName[de]=Betrachter " + id + "\n" +
                             (line.empty() ? "" : "Exec=" + line + "\n") + more + "\n");
}

void CViewers::MakeDefault(const std::string& id, const std::string& type)
{
    m_defaults += type + "=" + id + ".desktop\n";
    WriteFile(m_folder / "config/mimeapps.list", "[Default Applications]\n" + m_defaults);
}

std::string CViewers::Recorder() const
{
    return std::string("\"") + CV_TEST_BIN_DIR + "/launchservices/recorder\" \"" + Folder() + "\"";
}

std::string CViewers::Entry(const std::string& id) const
{
    return m_folder / ("data/applications/" + id + ".desktop");
}

std::vector<Visit> CViewers::VisitsOf(const std::function<void()>& work) const
{
    const int code = RunInChild([&work] {
        prctl(PR_SET_CHILD_SUBREAPER, 1); // what would go to the system's first process comes here
        work();
        while (wait(nullptr) >= 0 || errno == EINTR) {
        }
        return 0;
    });
    EXPECT_EQ(code, 0);
    return TakeVisits();
}

std::vector<Visit> CViewers::TakeVisits() const
{
    std::vector<Visit> visits;
    for (const auto& file : std::filesystem::directory_iterator(Folder())) {
        if (file.path().extension() == ".record") {
            visits.push_back(VisitOf(ReadFile(file.path().string())));
            std::filesystem::remove(file.path());
        }
    }
    return visits;
}

CFURLRef MakeUrl(const std::string& text)
{
    const CFStringRef string = MakeString(text);
    const CFURLRef url = CFURLCreateWithString(nullptr, string, nullptr);
    CFRelease(string);
    return url;
}

CFURLRef MakeFileUrl(const std::string& path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                   static_cast<CFIndex>(path.size()), false);
}
