// platform/hitoolbox/nib/NibTree.cpp
//
// The tokenizer. Every byte is looked at a bounded number of times, whatever the file holds.
#include "platform/hitoolbox/nib/NibTree.h"

#include <algorithm>

#include "platform/base/Text.h"

namespace {

constexpr std::size_t kMaximumElements = 500000;
// Each control inside another takes two levels, its own and that of the array it stands in.
constexpr std::size_t kMaximumElementDepth = 2 * kMaximumNibDepth + 16;
constexpr std::size_t kLongestQuotation = 40;

constexpr struct {
    std::string_view tag;
    NibElement element;
} kElements[] = {
    {"object", NibElement::Object},         {"reference", NibElement::Reference}, {"array", NibElement::Array},
    {"dictionary", NibElement::Dictionary}, {"string", NibElement::Value},        {"int", NibElement::Value},
    {"unsigned_int", NibElement::Value},    {"float", NibElement::Value},         {"boolean", NibElement::Value},
    {"ostype", NibElement::Code},
};

constexpr struct {
    std::string_view name;
    char32_t character;
} kEntities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''},
};

constexpr struct {
    std::string_view start;
    const char* message;
} kForeignFiles[] = {
    {"bplist", "a binary property list (a keyed archive of Cocoa), not a Carbon nib"},
    {"\x04\x0bstreamtyped", "a typed stream (an old archive of Cocoa), not a Carbon nib"},
};

bool IsBlank(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

std::string Quoted(std::string_view text)
{
    if (text.size() <= kLongestQuotation)
        return std::string(text);
    return std::string(text.substr(0, kLongestQuotation)) + "...";
}

/// Takes the bytes apart from front to back; `m_open` holds the elements that are not closed yet.
class CTokenizer {
public:
    CTokenizer(std::string_view bytes, NibProblem& problem) : m_bytes(bytes), m_problem(problem) {}

    std::optional<NibTree> Read()
    {
        if (!CheckFile())
            return std::nullopt;
        if (StartsWith(m_bytes, "\xEF\xBB\xBF"))
            m_at = 3;
        while (m_at < m_bytes.size()) {
            if (!ReadText() || (m_at < m_bytes.size() && !ReadMarkup()))
                return std::nullopt;
        }
        if (!m_open.empty()) {
            const NibNode& node = m_tree[m_open.back().node];
            Fail(m_bytes.size(), "the file ends inside the " + Quoted(m_open.back().tag) + " begun on line " +
                                     std::to_string(NibProblemAt(m_bytes, node.offset, {}).line));
            return std::nullopt;
        }
        if (m_tree.empty()) {
            Fail(m_bytes.size(), "no element in it");
            return std::nullopt;
        }
        return std::move(m_tree);
    }

private:
    struct Open {
        std::uint32_t node;
        std::uint32_t lastChild; // 0 for none
        std::string_view tag;
    };

    bool Fail(std::size_t offset, std::string message)
    {
        m_problem = NibProblemAt(m_bytes, offset, std::move(message));
        return false;
    }

    bool CheckFile()
    {
        if (m_bytes.empty())
            return Fail(0, "the file is empty");
        if (m_bytes.size() > kMaximumNibBytes)
            return Fail(0, "the file is larger than 16 MiB");
        for (const auto& foreign : kForeignFiles) {
            if (StartsWith(m_bytes, foreign.start))
                return Fail(0, foreign.message);
        }
        return true;
    }

    /// Moves to the next markup. Text belongs to the innermost element if nothing came before it there;
    /// between elements it is indentation.
    bool ReadText()
    {
        const std::size_t end = std::min(m_bytes.find('<', m_at), m_bytes.size());
        const std::string_view text = m_bytes.substr(m_at, end - m_at);
        if (!CountUtf16Units(text))
            return Fail(m_at, "text that is not UTF-8");
        if (m_open.empty()) {
            if (!std::all_of(text.begin(), text.end(), IsBlank))
                return Fail(m_at, m_tree.empty() ? "no XML: text before the first element" : "text after the end");
        } else if (m_tree.size() == m_open.back().node + std::size_t{1}) {
            m_tree.back().text = text;
        }
        m_at = end;
        return true;
    }

    bool ReadMarkup()
    {
        const std::string_view rest = m_bytes.substr(m_at);
        if (StartsWith(rest, "<?"))
            return Skip("?>");
        if (StartsWith(rest, "<!--"))
            return Skip("-->");
        if (StartsWith(rest, "<!"))
            return Fail(m_at, "a declaration, which nibs do not have");
        if (StartsWith(rest, "</"))
            return ReadEnd();
        return ReadStart();
    }

    bool Skip(std::string_view end)
    {
        if (!m_open.empty() && IsPlain(m_tree[m_open.back().node].element))
            return Fail(m_at, "markup inside a value");
        const std::size_t found = m_bytes.find(end, m_at);
        if (found == std::string_view::npos)
            return Fail(m_at, "a comment or instruction that does not end");
        m_at = found + end.size();
        return true;
    }

    bool ReadEnd()
    {
        const std::size_t begin = m_at;
        m_at += 2;
        const std::string_view tag = ReadName();
        SkipBlanks();
        if (m_at == m_bytes.size())
            return Fail(begin, "the file ends inside a tag");
        if (m_open.empty() || m_bytes[m_at] != '>' || tag != m_open.back().tag)
            return Fail(begin, "the end of " + Quoted(tag) + " where " +
                                   (m_open.empty() ? "nothing is open" : Quoted(m_open.back().tag) + " is open"));
        ++m_at;
        m_open.pop_back();
        return true;
    }

    bool ReadStart()
    {
        NibNode node;
        node.offset = m_at++;
        const std::string_view tag = ReadName();
        if (tag.empty())
            return Fail(node.offset, "a '<' that begins no tag");
        if (m_tree.size() == kMaximumElements)
            return Fail(node.offset, "more than 500000 elements");
        if (m_open.size() == kMaximumElementDepth)
            return Fail(node.offset, "elements nested too deeply");
        if (m_open.empty() && !m_tree.empty())
            return Fail(node.offset, "a second root element");
        if (!m_open.empty() && IsPlain(m_tree[m_open.back().node].element))
            return Fail(node.offset, "an element inside a value");
        for (const auto& known : kElements) {
            if (known.tag == tag)
                node.element = known.element;
        }
        bool closed = false;
        if (!ReadAttributes(node, closed))
            return false;
        Append(node, tag, closed);
        return true;
    }

    void Append(const NibNode& node, std::string_view tag, bool closed)
    {
        const auto index = static_cast<std::uint32_t>(m_tree.size());
        if (!m_open.empty()) {
            Open& parent = m_open.back();
            (parent.lastChild == 0 ? m_tree[parent.node].first : m_tree[parent.lastChild].next) = index;
            parent.lastChild = index;
        }
        m_tree.push_back(node);
        if (!closed)
            m_open.push_back({index, 0, tag});
    }

    /// Reads up to the tag's end. `closed` tells that the element is empty and ends here.
    bool ReadAttributes(NibNode& node, bool& closed)
    {
        for (;;) {
            SkipBlanks();
            if (m_at == m_bytes.size())
                return Fail(node.offset, "the file ends inside a tag");
            if (m_bytes[m_at] == '>') {
                ++m_at;
                return true;
            }
            if (StartsWith(m_bytes.substr(m_at), "/>")) {
                m_at += 2;
                closed = true;
                return true;
            }
            const std::size_t begin = m_at;
            std::string_view value;
            const std::string_view name = ReadName();
            if (name.empty() || !ReadAttributeValue(value))
                return Fail(begin, "an attribute without a quoted value in UTF-8");
            if (!TakeAttribute(node, name, value))
                return Fail(begin, "an " + std::string(name) + " that is no number: " + Quoted(value));
        }
    }

    bool ReadAttributeValue(std::string_view& value)
    {
        SkipBlanks();
        if (m_at == m_bytes.size() || m_bytes[m_at] != '=')
            return false;
        ++m_at;
        SkipBlanks();
        if (m_at == m_bytes.size() || (m_bytes[m_at] != '"' && m_bytes[m_at] != '\''))
            return false;
        const std::size_t begin = m_at + 1;
        const std::size_t end = m_bytes.find(m_bytes[m_at], begin);
        if (end == std::string_view::npos)
            return false;
        value = m_bytes.substr(begin, end - begin);
        m_at = end + 1;
        return CountUtf16Units(value).has_value();
    }

    static bool TakeAttribute(NibNode& node, std::string_view name, std::string_view value)
    {
        if (name == "name")
            node.key = value;
        else if (name == "class")
            node.className = value;
        else if (name == "id" || name == "idRef")
            return TakeId(node, value);
        return true; // a count is a hint that edited files have wrong
    }

    static bool TakeId(NibNode& node, std::string_view value)
    {
        std::uint64_t id = 0;
        for (const char digit : value) {
            if (digit < '0' || digit > '9')
                return false;
            id = id * 10 + static_cast<unsigned>(digit - '0');
            if (id > UINT32_MAX)
                return false;
        }
        node.id = static_cast<std::uint32_t>(id);
        return !value.empty();
    }

    std::string_view ReadName()
    {
        const std::size_t begin = m_at;
        while (m_at < m_bytes.size() && !IsBlank(m_bytes[m_at]) &&
               std::string_view("<>/=\"'").find(m_bytes[m_at]) == std::string_view::npos)
            ++m_at;
        return m_bytes.substr(begin, m_at - begin);
    }

    void SkipBlanks()
    {
        while (m_at < m_bytes.size() && IsBlank(m_bytes[m_at]))
            ++m_at;
    }

    std::string_view m_bytes;
    NibProblem& m_problem;
    std::size_t m_at = 0;
    NibTree m_tree;
    std::vector<Open> m_open;
};

/// Answers the character that a reference's name ("amp", "#27", "#x1B") stands for; nothing for an unknown name.
std::optional<char32_t> CharacterNamed(std::string_view name)
{
    for (const auto& entity : kEntities) {
        if (entity.name == name)
            return entity.character;
    }
    if (name.size() < 2 || name[0] != '#')
        return std::nullopt;
    const bool hexadecimal = name[1] == 'x' || name[1] == 'X';
    const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
    char32_t code = 0;
    for (const char digit : digits) {
        const bool decimal = digit >= '0' && digit <= '9';
        const char lower = static_cast<char>(digit | 0x20);
        if (!decimal && (!hexadecimal || lower < 'a' || lower > 'f'))
            return std::nullopt;
        code = code * (hexadecimal ? 16 : 10) + static_cast<char32_t>(decimal ? digit - '0' : lower - 'a' + 10);
        code = std::min(code, char32_t{0x110000}); // keeps long rows of digits from running over
    }
    if (digits.empty())
        return std::nullopt;
    return code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) ? char32_t{0xFFFD} : code;
}

} // namespace

std::optional<NibTree> ReadNibTree(std::string_view bytes, NibProblem& problem)
{
    return CTokenizer(bytes, problem).Read();
}

std::string UnescapeNibText(std::string_view text)
{
    constexpr std::size_t kLongestReference = 16;
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        const std::size_t ampersand = std::min(text.find('&'), text.size());
        plain.append(text.substr(0, ampersand));
        text.remove_prefix(ampersand);
        if (text.empty())
            break;
        const std::size_t end = text.substr(0, kLongestReference).find(';');
        const auto character = end == std::string_view::npos ? std::nullopt : CharacterNamed(text.substr(1, end - 1));
        if (character)
            AppendUtf8(plain, *character);
        else
            plain.push_back('&');
        text.remove_prefix(character ? end + 1 : 1);
    }
    return plain;
}

NibProblem NibProblemAt(std::string_view bytes, std::size_t offset, std::string message)
{
    std::replace_if(
        message.begin(), message.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
    const std::string_view before = bytes.substr(0, offset);
    return {std::move(message), 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')), offset};
}
