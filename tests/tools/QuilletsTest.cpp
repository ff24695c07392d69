// tests/tools/QuilletsTest.cpp
//
// The command line: what it prints, for people and for machines, and what it exits with.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/Support.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

ProgramResult Quillets(std::vector<std::string> words)
{
    words.insert(words.begin(), BuiltTool());
    return RunProgram(words);
}

// Runs it with a shell's redirection of its output.
ProgramResult QuilletsInto(const std::string& redirection, const std::string& words)
{
    return RunProgram({"sh", "-c", "\"$0\" " + words + " " + redirection, BuiltTool()});
}

std::string CopyBundle(const std::string& to)
{
    std::filesystem::create_directories(std::filesystem::path(to).parent_path());
    std::filesystem::copy(BuiltBundle(), to, std::filesystem::copy_options::recursive);
    return to;
}

// A reader of JSON that only tells whether a text is valid (RFC 8259).
class CJson {
public:
    static bool IsValid(std::string_view text)
    {
        CJson json(text);
        return json.Value() && (json.Space(), json.m_rest.empty());
    }

private:
    explicit CJson(std::string_view text) : m_rest(text) {}

    void Space() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \n\r\t"), m_rest.size())); }
    bool Take(char wanted)
    {
        Space();
        if (m_rest.empty() || m_rest.front() != wanted)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    bool String()
    {
        if (!Take('"'))
            return false;
        while (!m_rest.empty() && m_rest.front() != '"') {
            if (static_cast<unsigned char>(m_rest.front()) < 0x20)
                return false;
            const std::size_t size = m_rest.front() != '\\' ? 1 : m_rest.substr(1, 1) == "u" ? 6 : 2;
            if (size > m_rest.size() ||
                (size == 2 && std::string_view("\"\\/bfnrt").find(m_rest[1]) == std::string_view::npos))
                return false;
            m_rest.remove_prefix(size);
        }
        return Take('"');
    }
    bool List(char end, bool named)
    {
        if (Take(end))
            return true;
        do {
            if ((named && !(String() && Take(':'))) || !Value())
                return false;
        } while (Take(','));
        return Take(end);
    }
    bool Value()
    {
        Space();
        if (Take('{'))
            return List('}', true);
        if (Take('['))
            return List(']', false);
        if (!m_rest.empty() && m_rest.front() == '"')
            return String();
        const std::size_t size = std::min(m_rest.find_first_of(",]} \n\r\t"), m_rest.size());
        const std::string_view word = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return word == "true" || word == "false" || word == "null" ||
               (!word.empty() && word.find_first_not_of("+-0123456789.eE") == std::string_view::npos);
    }

    std::string_view m_rest;
};

void ExpectUsageError(const ProgramResult& result)
{
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith("quillets: "));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

void ExpectFailure(const ProgramResult& result)
{
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, StartsWith("quillets: "));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

} // namespace

TEST(Identity, PrintsALineForEachThing)
{
    const ProgramResult result = Quillets({"identity"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("Name     Corvane Audio Quillets for Mac\n"));
    EXPECT_THAT(result.out, HasSubstr("Version  Version 1.3 Build "));
    EXPECT_THAT(result.out, HasSubstr("\nBuild    "));
    EXPECT_THAT(result.out, HasSubstr("\nNotice   Copyright \xC2\xA9 "));
    EXPECT_THAT(result.out, HasSubstr("\nBundle   /"));
}

TEST(Identity, PrintsOneJsonObject)
{
    const ProgramResult result = Quillets({"identity", "--json"});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(CJson::IsValid(result.out)) << result.out;
    EXPECT_THAT(result.out, HasSubstr("\"name\": \"Corvane Audio Quillets for Mac\""));
    EXPECT_THAT(result.out, HasSubstr("\"major\": 1, \"minor\": 3, \"build\": "));
}

TEST(Identity, ItsJsonIsValidWhateverThePath)
{
    const CTemporaryFolder folder;
    for (const char* const name : {"quote\" back\\slash", "new\nline\ttab\x1B", "no UTF-8 \xFF\xC3"}) {
        const std::string bundle = CopyBundle(folder / (std::string(name) + "/Quillets.bundle"));
        const ProgramResult result = Quillets({"--bundle", bundle, "identity", "--json"});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(CJson::IsValid(result.out)) << result.out;
        const ProgramResult plain = Quillets({"--bundle", bundle, "identity"});
        EXPECT_EQ(std::count(plain.out.begin(), plain.out.end(), '\n'), 5) << "a line each: " << plain.out;
        EXPECT_EQ(plain.out.find('\x1B'), std::string::npos) << "nothing that a terminal obeys";
    }
}

TEST(Identity, WorksOnAnotherBundle)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "Other.bundle");
    EXPECT_THAT(Quillets({"--bundle", bundle, "identity"}).out, HasSubstr(bundle));
    EXPECT_THAT(Quillets({"--bundle", bundle + "/", "identity"}).out, HasSubstr(bundle));
}

TEST(Identity, WithoutABundleTellsWhereItLooked)
{
    const ProgramResult result = Quillets({"--bundle", "/no/such.bundle", "identity"});
    ExpectFailure(result);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("/no/such.bundle"));
}

TEST(Identity, OfADamagedBundleFails)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "Damaged.bundle");
    WriteFile(bundle + "/Contents/MacOS/Quillets", "no code");
    ExpectFailure(Quillets({"--bundle", bundle, "identity"}));
    std::filesystem::remove_all(bundle + "/Contents/MacOS");
    ExpectFailure(Quillets({"--bundle", bundle, "identity"}));
    std::filesystem::remove_all(bundle + "/Contents");
    ExpectFailure(Quillets({"--bundle", bundle, "identity"}));
}

TEST(Identity, OfABundleWithOtherCodeFails)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "Foreign.bundle");
    std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform.so.1", bundle + "/Contents/MacOS/Quillets",
                               std::filesystem::copy_options::overwrite_existing);
    const ProgramResult result = Quillets({"--bundle", bundle, "identity"});
    ExpectFailure(result);
    EXPECT_THAT(result.err, HasSubstr("no product services"));
}

TEST(Doctor, FindsNothingMissing)
{
    SKIP_WITHOUT_MODULES();
    const ProgramResult result = Quillets({"doctor"});
    EXPECT_EQ(result.code, 0) << result.out;
    EXPECT_EQ(result.out.find("MISSING"), std::string::npos) << result.out;
    for (const char* const subject : {" bundle ", " resources ", " image ", " layer "})
        EXPECT_THAT(result.out, HasSubstr(subject));
    EXPECT_THAT(result.out, HasSubstr("libcvplatform.so.1"));
}

TEST(Doctor, NamesWhatIsMissing)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "Damaged.bundle");
    std::filesystem::remove_all(bundle + "/Contents/Resources");
    ProgramResult result = Quillets({"--bundle", bundle, "doctor"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("MISSING resources"));

    WriteFile(bundle + "/Contents/Info.plist", "<plist><dict>");
    result = Quillets({"--bundle", bundle, "doctor"});
    EXPECT_THAT(result.out, HasSubstr("MISSING properties"));

    WriteFile(bundle + "/Contents/MacOS/Quillets", "no code");
    result = Quillets({"--bundle", bundle, "doctor"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("MISSING image"));

    result = Quillets({"--bundle", folder / "none", "doctor"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("MISSING bundle"));
}

TEST(Doctor, NamesAModuleThatCannotBeLoaded)
{
    SKIP_WITHOUT_MODULES();
    const CTemporaryFolder layer;
    for (const char* const file : {"libcvplatform.so.1", "libcvplatform-image.so", "libcvplatform-x11.so"})
        std::filesystem::copy_file(std::string(CV_BUILD_DIR "/") + file, layer / file);
    const auto diagnose = [&layer] {
        const ProgramResult result = RunProgram({BuiltTool(), "doctor"}, {{"LD_LIBRARY_PATH", layer.Path()}});
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.out, HasSubstr("  ok    module       libcvplatform-x11.so"));
        return result.out;
    };
    EXPECT_THAT(diagnose(), HasSubstr("MISSING module       " + (layer / "libcvplatform-launch.so")));
    WriteFile(layer / "libcvplatform-launch.so", "no code");
    EXPECT_THAT(diagnose(), HasSubstr("MISSING module       " + (layer / "libcvplatform-launch.so")));
}

TEST(CommandLine, HelpIsEverywhere)
{
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--help"},
                                                  {"identity", "--help"},
                                                  {"doctor", "--help"},
                                                  {"identity", "--json", "--help"}}) {
        const ProgramResult result = Quillets(words);
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_THAT(result.out, StartsWith("Usage: quillets "));
        EXPECT_THAT(result.out, HasSubstr("Exit status: 0 "));
    }
    EXPECT_THAT(Quillets({"--help"}).out, HasSubstr("identity"));
    EXPECT_THAT(Quillets({"--version"}).out, StartsWith("quillets 1.3.0"));
}

TEST(CommandLine, WrongArgumentsAreOneLineAndExitTwo)
{
    ExpectUsageError(Quillets({}));
    ExpectUsageError(Quillets({"nonsense"}));
    ExpectUsageError(Quillets({"--nonsense", "identity"}));
    ExpectUsageError(Quillets({"--bundle"}));
    ExpectUsageError(Quillets({"--bundle", "", "identity"}));
    ExpectUsageError(Quillets({"--bundle", "/x"}));
    ExpectUsageError(Quillets({"identity", "more"}));
    ExpectUsageError(Quillets({"identity", "--jso"}));
    ExpectUsageError(Quillets({"identity", "--json", "--json"}));
    ExpectUsageError(Quillets({"doctor", "more"}));
    ExpectUsageError(Quillets({""}));
    ExpectUsageError(Quillets({"new\nline"}));
}

TEST(CommandLine, OutputThatCannotBeWrittenIsAFailure)
{
    SKIP_WITHOUT_MODULES();
    ExpectFailure(QuilletsInto(">/dev/full", "identity"));
    ExpectFailure(QuilletsInto(">&-", "identity"));
    ExpectFailure(QuilletsInto(">/dev/full", "--help"));
    ExpectFailure(QuilletsInto(">/dev/full", "doctor"));
}
