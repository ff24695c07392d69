// tests/system/Host.cpp
#include "tests/system/Host.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "tests/support/Support.h"

namespace {

// Shows the plug-in that its command line names, and ends with its window.
class CPlayer : public IHost {
public:
    CPlayer(const std::string& program, const std::string& uri) : m_program({program, uri}) {}

    CProgram& Program() override { return m_program; }
    void ShowPlugin() override {}
    bool OutlivesWindow() const override { return false; }

private:
    CProgram m_program;
};

constexpr std::uint32_t kControlKey = 0xFFE3;
constexpr std::uint32_t kAltKey = 0xFFE9;
constexpr const char* kSoundName = "silence";

// A second of silence: 8000 samples of one byte.
std::string SilentSound()
{
    using std::string_literals::operator""s;
    const std::string format = "\x10\0\0\0\1\0\1\0\x40\x1F\0\0\x40\x1F\0\0\1\0\x08\0"s;
    return "RIFF\x64\x1F\0\0WAVEfmt "s + format + "data\x40\x1F\0\0"s + std::string(8000, '\x80');
}

// An editor that applies effects to what is recorded. A key is bound to the plug-in in its settings,
// and it begins without its welcome.
class CEditor : public IHost {
public:
    CEditor(const CScreen& screen, const std::string& folder, const std::string& uri, const std::string& vendor,
            const std::string& name)
        : m_screen(screen)
    {
        const std::string settings = std::string(std::getenv("XDG_CONFIG_HOME")) + "/audacity";
        const std::string work = folder + "/audacity";
        const std::string sound = work + "/" + kSoundName + ".wav";
        for (const std::string& old : {settings, work}) // else it offers to recover what was open
            std::filesystem::remove_all(old);
        WriteFile(sound, SilentSound());
        WriteFile(settings + "/audacity.cfg", "PrefsVersion=1.1.1r1\n"
                                              "[GUI]\nShowSplashScreen=0\n"
                                              "[Version]\nMajor=3\nMinor=2\nMicro=4\n"
                                              "[Directories]\nTempDir=" +
                                                  work + "\n" + BoundKey(uri, vendor, name));
        m_program.emplace(std::vector<std::string>{"env", "LD_PRELOAD=" CV_KEEP_MODULES, "JACK_NO_START_SERVER=1",
                                                   "audacity", sound});
    }
    ~CEditor() override
    {
        (void)m_program->End();
        RemoveSharedMemory();
    }

    CProgram& Program() override { return *m_program; }
    // Keys that come before the program listens are lost, so they are pressed now and then.
    void ShowPlugin() override
    {
        const auto now = std::chrono::steady_clock::now();
        const std::vector<ScreenWindow> windows = m_screen.Find(kSoundName);
        if (windows.empty() || !m_screen.IsInside(m_screen.Focus(), windows.front().id) || now < m_next)
            return;
        m_next = now + std::chrono::seconds(3);
        m_screen.Tap('a', {kControlKey}); // effects want a selection
        m_screen.Tap('q', {kControlKey, kAltKey});
    }
    bool OutlivesWindow() const override { return true; }

private:
    // Effects are commands named after type, maker, name and place; the place's last part is the key.
    static std::string BoundKey(const std::string& uri, const std::string& vendor, const std::string& name)
    {
        const std::size_t slash = uri.rfind('/');
        std::string group;
        for (const char letter : "Effect_LV2_" + vendor + "_" + name + "_" + uri.substr(0, slash)) {
            if (letter == '/' && group.back() == '/')
                continue;
            if (letter == ' ' || letter == ':')
                group += '\\';
            group += letter;
        }
        return "[NewKeys/" + group + "]\n" + uri.substr(slash + 1) + "=Ctrl+Alt+Q\n";
    }

    // It leaves what it finds a running twin by, even when it is quit.
    void RemoveSharedMemory() const
    {
        constexpr key_t kSemaphores[] = {0x01000000, 0x02000000};
        shm_info info = {};
        const int last = shmctl(0, SHM_INFO, reinterpret_cast<shmid_ds*>(&info));
        for (int index = 0; index <= last; ++index) {
            shmid_ds segment = {};
            const int id = shmctl(index, SHM_STAT, &segment);
            if (id < 0 || segment.shm_cpid != m_program->Id())
                continue;
            for (const key_t semaphores : kSemaphores)
                (void)semctl(semget(segment.shm_perm.__key | semaphores, 0, 0), 0, IPC_RMID);
            (void)shmctl(id, IPC_RMID, nullptr);
        }
    }

    const CScreen& m_screen;
    std::optional<CProgram> m_program;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace

std::unique_ptr<IHost> StartHost(const std::string& program, const CScreen& screen, const std::string& folder,
                                 const std::string& uri, const std::string& vendor, const std::string& name)
{
    if (program == "audacity")
        return std::make_unique<CEditor>(screen, folder, uri, vendor, name);
    return std::make_unique<CPlayer>(program, uri);
}
