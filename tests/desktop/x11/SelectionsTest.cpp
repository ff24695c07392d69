// tests/desktop/x11/SelectionsTest.cpp
//
// Texts to and from other programs: the clipboard and what was marked last, in one piece and in
// parts, with partners that behave and with some that do not.
#include <gmock/gmock.h>

#include "tests/support/Desk.h"

namespace {

using testing::HasSubstr;

constexpr std::uint32_t kControl = 0xFFE3;
constexpr int kMiddleButton = 2;
constexpr std::size_t kLongText = 300000; // more than either side sends in one part

// A server whose requests are short, so that no text has to be huge to go in parts.
CScreen& TheSmallScreen()
{
    static CScreen screen{[] {
        ScreenOptions options;
        options.server = {"-maxbigreqsize", "1"};
        return options;
    }()};
    return screen;
}

// One that shows where it was put together wrongly.
std::string LongText()
{
    std::string text;
    for (int word = 0; text.size() < kLongText; ++word)
        text += std::to_string(word) + " \xC3\xBC ";
    return text;
}

class Selections : public testing::Test {
protected:
    // Runs a program beside our windows; answers what it prints.
    static std::string Ask(const std::vector<std::string>& words)
    {
        CProgram program(words);
        EXPECT_TRUE(ServeUntil([&] { return !program.IsRunning(); })) << words.front();
        return program.Log();
    }
    // Has another program offer a text until it is told to end.
    void Offer(std::optional<CProgram>& program, const std::string& selection, const std::string& text)
    {
        const xcb_window_t before = m_screen.OwnerOf(selection == "primary" ? "PRIMARY" : "CLIPBOARD");
        WriteFile(m_folder / "text", text);
        program.emplace(std::vector<std::string>{"xclip", "-quiet", "-selection", selection, "-i", m_folder / "text"});
        ASSERT_TRUE(ServeUntil([&] {
            const xcb_window_t owner = m_screen.OwnerOf(selection == "primary" ? "PRIMARY" : "CLIPBOARD");
            return owner != 0 && owner != before;
        })) << program->Log();
    }
    bool Owns(const std::string& selection, bool wanted = true)
    {
        return ServeUntil([&] { return (m_screen.OwnerOf(selection) != 0) == wanted; });
    }
    void FocusOn(ControlRef control) const
    {
        ASSERT_EQ(SetKeyboardFocus(m_dialog.Window(), control, kControlEditTextPart), noErr);
    }
    void Copy(OSType signature, const std::string& text)
    {
        m_dialog.SetText(signature, 0, text.c_str());
        FocusOn(m_dialog.Control(signature));
        m_screen.Tap('a', {kControl});
        m_screen.Tap('c', {kControl});
        ASSERT_TRUE(Owns("CLIPBOARD"));
    }
    void Paste(OSType signature) const
    {
        FocusOn(m_dialog.Control(signature));
        m_screen.Tap('v', {kControl});
    }
    bool Becomes(OSType signature, const std::string& text) const
    {
        return ServeUntil([&] { return m_dialog.Text(signature) == text; });
    }

    CTemporaryFolder m_folder;
    CScreen& m_screen = TheSmallScreen();
    const CDialog m_dialog{Stand::OnScreen};
    const ScreenWindow m_window = ActiveOn(m_screen, m_dialog.Window());
};

TEST_F(Selections, CopiedTextReachesOtherPrograms)
{
    Copy('EDIT', "Gr\xC3\xBC\xC3\x9F\x65 \xE2\x82\xAC");
    const std::vector<std::string> paste = {"xclip", "-o", "-selection", "clipboard", "-t"};
    const auto as = [&](const std::string& target) {
        std::vector<std::string> words = paste;
        words.push_back(target);
        return Ask(words);
    };
    EXPECT_EQ(as("UTF8_STRING"), "Gr\xC3\xBC\xC3\x9F\x65 \xE2\x82\xAC");
    EXPECT_EQ(as("text/plain;charset=utf-8"), "Gr\xC3\xBC\xC3\x9F\x65 \xE2\x82\xAC");
    EXPECT_EQ(as("STRING"), "Gr\xFC\xDF\x65 ?");
    const std::string targets = as("TARGETS");
    for (const char* target : {"TARGETS", "TIMESTAMP", "UTF8_STRING", "STRING", "TEXT", "text/plain"})
        EXPECT_THAT(targets, HasSubstr(target));
    EXPECT_THAT(as("image/png"), HasSubstr("not available"));
}

TEST_F(Selections, OtherProgramsTextIsPasted)
{
    std::optional<CProgram> owner;
    Offer(owner, "clipboard", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 \xE2\x82\xAC");
    Paste('EDIT');
    EXPECT_TRUE(Becomes('EDIT', "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 \xE2\x82\xAC"));
}

TEST_F(Selections, OwnTextIsPastedWithoutAnybodysHelp)
{
    Copy('EDIT', "own");
    Paste('MULT');
    EXPECT_TRUE(Becomes('MULT', "own"));
}

TEST_F(Selections, MarkedTextIsThereForTheMiddleButtonElsewhere)
{
    m_dialog.SetText('EDIT', 0, "marked");
    const ScreenSpot middle = MiddleOn(m_screen, m_dialog.Control('EDIT'));
    m_screen.Click(middle.x - 90, middle.y);
    m_screen.Click(middle.x - 90, middle.y);
    ASSERT_TRUE(Owns("PRIMARY"));
    EXPECT_EQ(Ask({"xclip", "-o", "-selection", "primary"}), "marked");
}

TEST_F(Selections, MiddleButtonPastesWhatIsMarkedElsewhere)
{
    std::optional<CProgram> owner;
    Offer(owner, "primary", "elsewhere");
    ClickOn(m_screen, m_dialog.Control('EDIT'), kMiddleButton);
    EXPECT_TRUE(Becomes('EDIT', "elsewhere"));
}

TEST_F(Selections, LongTextsGoOutInParts)
{
    const std::string text = LongText();
    Copy('EDIT', text);
    EXPECT_TRUE(Ask({"xclip", "-o", "-selection", "clipboard", "-t", "UTF8_STRING"}) == text);
}

TEST_F(Selections, LongTextsComeInInParts)
{
    const std::string text = LongText();
    std::optional<CProgram> owner;
    Offer(owner, "clipboard", text);
    for (const OSType field : {'EDIT', 'MULT'}) {
        Paste(field);
        EXPECT_TRUE(Becomes(field, text));
        m_screen.Tap('x');
        EXPECT_TRUE(Becomes(field, text + "x"));
    }
}

TEST_F(Selections, OtherProgramTakesTheClipboardOver)
{
    Copy('EDIT', "mine");
    std::optional<CProgram> owner;
    Offer(owner, "clipboard", "theirs");
    Paste('MULT');
    EXPECT_TRUE(Becomes('MULT', "theirs"));
}

TEST_F(Selections, OwnerThatNeverAnswersIsGivenUp)
{
    // It owns the clipboard and does nothing; what is asked for later is not lost behind it.
    const xcb_window_t mute = xcb_generate_id(m_screen.Connection());
    xcb_create_window(m_screen.Connection(), XCB_COPY_FROM_PARENT, mute, m_screen.Root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(m_screen.Connection(), mute, m_screen.Atom("CLIPBOARD"), XCB_CURRENT_TIME);
    m_screen.Sync();
    Paste('EDIT');
    m_screen.Tap('x');
    ASSERT_TRUE(Becomes('EDIT', "x")) << "typing waits for the clipboard";
    std::optional<CProgram> owner;
    Offer(owner, "clipboard", "later");
    m_screen.Tap('v', {kControl});
    EXPECT_TRUE(Becomes('EDIT', "xlater"));
    m_screen.DestroyWindow(mute);
}

TEST_F(Selections, OwnerThatIsGoneHasNoText)
{
    {
        std::optional<CProgram> owner;
        Offer(owner, "clipboard", "gone");
    }
    ASSERT_TRUE(Owns("CLIPBOARD", false));
    Paste('EDIT');
    m_screen.Tap('x');
    EXPECT_TRUE(Becomes('EDIT', "x"));
}

} // namespace
