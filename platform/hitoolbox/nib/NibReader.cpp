// platform/hitoolbox/nib/NibReader.cpp
//
// Makes records of the tree: which key goes where stands in tables, one per kind of record. Objects are
// indexed before anything is built, because a reference may come before the object it names.
#include "platform/hitoolbox/nib/NibReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <map>
#include <variant>

#include "platform/base/Text.h"
#include "platform/hitoolbox/nib/NibKeys.h"
#include "platform/hitoolbox/nib/NibTree.h"

namespace {

constexpr std::size_t kMaximumTabs = 256;
constexpr std::int64_t kMaximumRadioButtons = 4096;
constexpr std::int32_t kMaximumTickMarks = 1024;

/// The background of a window class where the file names none.
constexpr struct {
    std::int32_t windowClass;
    std::int32_t brush;
} kClassBrushes[] = {
    {1, 3}, {2, 3}, {3, 1}, {4, 49}, {8, 7}, {11, 53}, {15, 53}, {20, 51},
};

/// Values of a control that mean something only once all its keys are known.
struct Unfinished {
    const NibNode* bounds = nullptr;
    const NibNode* viewFrame = nullptr;
    const NibNode* subviews = nullptr;
    const NibNode* tabItems = nullptr;
    const NibNode* radioTitles = nullptr;
    std::int32_t selectedRow = 1, selectedColumn = 1;
};

NibClass ClassNamed(std::string_view name)
{
    for (const auto& known : kNibClasses) {
        if (known.name == name)
            return known.kind;
    }
    return NibClass::Unknown;
}

/// Makes every kind of line break one LF.
std::string WithPlainLineBreaks(std::string text)
{
    std::size_t kept = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n')
            continue;
        text[kept++] = text[at] == '\r' ? '\n' : text[at];
    }
    text.resize(kept);
    return text;
}

std::string_view NextWord(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
    text.remove_prefix(word.size());
    return word;
}

/// Reads `Count` whole numbers between blanks; nothing if there are more or fewer.
template <std::size_t Count>
std::optional<std::array<std::int64_t, Count>> Numbers(std::string_view text)
{
    std::array<std::int64_t, Count> numbers{};
    for (std::int64_t& number : numbers) {
        const std::string_view word = NextWord(text);
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (error != std::errc() || end != word.data() + word.size())
            return std::nullopt;
    }
    return NextWord(text).empty() ? std::make_optional(numbers) : std::nullopt;
}

/// For numbers that are written as strings, which may be empty.
std::int32_t NumberOrZero(std::string_view text)
{
    const auto numbers = Numbers<1>(text);
    return numbers ? static_cast<std::int32_t>(std::clamp<std::int64_t>((*numbers)[0], INT32_MIN, INT32_MAX)) : 0;
}

std::int16_t Coordinate(std::int64_t number)
{
    return static_cast<std::int16_t>(std::clamp<std::int64_t>(number, INT16_MIN, INT16_MAX));
}

} // namespace

/// Builds the records. The first failure sticks; what is read after it has no meaning.
class CNibBuilder {
public:
    CNibBuilder(std::string_view bytes, const NibTree& tree, NibProblem& problem)
        : m_bytes(bytes), m_tree(tree), m_problem(problem), m_placed(tree.size(), false)
    {
    }

    std::optional<NibDocument> Build()
    {
        IndexObjects();
        const NibNode* const names = CheckRoot();
        if (names && !m_failed)
            ReadNames(*names);
        if (m_failed)
            return std::nullopt;
        return std::move(m_document);
    }

private:
    struct KnownMenu {
        std::shared_ptr<const NibMenu> menu; // null while it is being read
        int height = 0;                      // menus below each other, itself included
    };

    void Fail(const NibNode& node, std::string message)
    {
        if (!m_failed)
            m_problem = NibProblemAt(m_bytes, node.offset, std::move(message));
        m_failed = true;
    }

    void FailValue(const NibNode& node, const char* wanted)
    {
        constexpr std::size_t kLongest = 40;
        Fail(node, (node.key.empty() ? "a text" : std::string(node.key.substr(0, kLongest))) + " is no " + wanted +
                       ": '" + std::string(node.text.substr(0, kLongest)) + "'");
    }

    // Walking the tree.

    template <typename Visit>
    void ForEachChild(const NibNode& parent, Visit&& visit)
    {
        for (std::uint32_t index = parent.first; index != 0 && !m_failed; index = m_tree[index].next)
            visit(m_tree[index]);
    }

    /// Visits the pairs of a dictionary; a key without a value at its end is left out.
    template <typename Visit>
    void ForEachPair(const NibNode& dictionary, Visit&& visit)
    {
        const NibNode* key = nullptr;
        ForEachChild(dictionary, [&](const NibNode& node) {
            if (key)
                visit(UnescapeNibText(key->text), node);
            key = key ? nullptr : &node;
        });
    }

    void IndexObjects()
    {
        for (const NibNode& node : m_tree) {
            if (node.element == NibElement::Object && node.id != 0)
                m_objects.push_back(&node);
        }
        std::stable_sort(m_objects.begin(), m_objects.end(),
                         [](const NibNode* one, const NibNode* other) { return one->id < other->id; });
        const auto twin =
            std::adjacent_find(m_objects.begin(), m_objects.end(),
                               [](const NibNode* one, const NibNode* other) { return one->id == other->id; });
        if (twin != m_objects.end())
            Fail(**std::next(twin), "a second object with the id " + std::to_string((*twin)->id));
    }

    /// Answers the object that `node` is or refers to; null when the file does not hold it.
    const NibNode* Resolve(const NibNode& node) const
    {
        if (node.element == NibElement::Object)
            return &node;
        if (node.element != NibElement::Reference)
            return nullptr;
        const auto found = std::lower_bound(m_objects.begin(), m_objects.end(), node.id,
                                            [](const NibNode* object, std::uint32_t id) { return object->id < id; });
        return found != m_objects.end() && (*found)->id == node.id ? *found : nullptr;
    }

    /// As Resolve, but an object that is missing is a failure.
    const NibNode* Require(const NibNode& node)
    {
        const NibNode* const object = Resolve(node);
        if (!object)
            Fail(node, node.element == NibElement::Reference
                           ? "a reference to object " + std::to_string(node.id) + ", which is not in the file"
                           : "a value where an object belongs");
        return object;
    }

    /// Every object stands in one place, which rules out circles too.
    bool Place(const NibNode& object, int depth)
    {
        const auto index = static_cast<std::size_t>(&object - m_tree.data());
        if (m_placed[index])
            Fail(object, "object " + std::to_string(object.id) + " stands in two places or inside itself");
        else if (depth > kMaximumNibDepth)
            Fail(object, "objects nested too deeply");
        else
            Count(object, 1);
        m_placed[index] = true;
        return !m_failed;
    }

    void Count(const NibNode& node, std::size_t objects)
    {
        m_count += objects;
        if (m_count > kMaximumNibObjects)
            Fail(node, "more than " + std::to_string(kMaximumNibObjects) + " controls and menu items");
    }

    // Values.

    bool IsValue(const NibNode& node)
    {
        const bool isValue = IsPlain(node.element) || (node.element == NibElement::Other && node.first == 0);
        if (!isValue)
            FailValue(node, "plain value");
        return isValue;
    }

    void Read(const NibNode& node, bool& result)
    {
        result = node.text == "TRUE" || node.text == "1";
        if (!result && node.text != "FALSE" && node.text != "0")
            FailValue(node, "boolean");
    }

    void Read(const NibNode& node, std::int32_t& result)
    {
        if (node.element == NibElement::Code)
            result = static_cast<std::int32_t>(ReadCode(node));
        else
            result = ReadNumber(node);
    }

    /// A four-character code may be written as its number, too.
    void Read(const NibNode& node, std::uint32_t& result)
    {
        if (node.element != NibElement::Code && Numbers<1>(node.text))
            result = static_cast<std::uint32_t>(ReadNumber(node));
        else
            result = ReadCode(node);
    }

    std::int32_t ReadNumber(const NibNode& node)
    {
        const auto numbers = Numbers<1>(node.text);
        if (numbers && (*numbers)[0] >= INT32_MIN && (*numbers)[0] <= UINT32_MAX)
            return static_cast<std::int32_t>(static_cast<std::uint32_t>((*numbers)[0]));
        FailValue(node, "whole number of 32 bits");
        return 0;
    }

    std::uint32_t ReadCode(const NibNode& node)
    {
        constexpr std::size_t kLongest = 4 * sizeof "&#x10FFFF;";
        const auto bytes = node.text.size() > kLongest ? std::nullopt : MacRomanOfUtf8(UnescapeNibText(node.text));
        if (!bytes || (!bytes->empty() && bytes->size() != 4))
            FailValue(node, "four-character code");
        std::uint32_t code = 0;
        for (const char byte : bytes.value_or(std::string()))
            code = (code << 8U) | static_cast<unsigned char>(byte);
        return code;
    }

    void Read(const NibNode& node, double& result)
    {
        std::string_view text = node.text;
        const std::string_view word = NextWord(text);
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), result);
        if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(result))
            FailValue(node, "number");
    }

    void Read(const NibNode& node, std::string& result)
    {
        if (IsValue(node))
            result = WithPlainLineBreaks(UnescapeNibText(node.text));
    }

    template <typename Value>
    void Read(const NibNode& node, std::optional<Value>& result)
    {
        Read(node, result.emplace());
    }

    template <typename Record, std::size_t Size>
    bool Take(const Field<Record> (&fields)[Size], const NibNode& node, Record& record)
    {
        for (const Field<Record>& field : fields) {
            if (field.key == node.key) {
                std::visit([&](auto member) { Read(node, record.*member); }, field.member);
                return true;
            }
        }
        return false;
    }

    NibRect ReadRect(const NibNode& node)
    {
        const auto numbers = Numbers<4>(node.text);
        if (!numbers) {
            FailValue(node, "rectangle");
            return {};
        }
        const auto& [top, left, bottom, right] = *numbers;
        return {Coordinate(top), Coordinate(left), Coordinate(bottom), Coordinate(right)};
    }

    std::vector<std::string> ReadStrings(const NibNode& array)
    {
        std::vector<std::string> strings;
        ForEachChild(array, [&](const NibNode& node) { Read(node, strings.emplace_back()); });
        return strings;
    }

    // Menus.

    /// Reads a menu once, however many controls and items show it.
    /// @param depth  how many menus this one stands in.
    KnownMenu ReadMenu(const NibNode& node, int depth)
    {
        const NibNode* const object = Require(node);
        if (!object)
            return {};
        const auto [place, isNew] = m_menus.try_emplace(object);
        KnownMenu& known = place->second;
        if (!isNew && !known.menu)
            Fail(*object, "menu " + std::to_string(object->id) + " stands inside itself");
        if (depth + known.height > kMaximumNibDepth)
            Fail(*object, "menus nested too deeply");
        if (!isNew || m_failed)
            return known;
        Count(*object, 1);
        auto menu = std::make_shared<NibMenu>();
        int height = 0;
        ForEachChild(*object, [&](const NibNode& value) {
            if (!Take(kMenuFields, value, *menu) && value.key == "items")
                ForEachChild(value,
                             [&](const NibNode& item) { height = std::max(height, ReadMenuItem(item, *menu, depth)); });
        });
        return known = {std::move(menu), height + 1};
    }

    /// Answers how many menus deep the item's submenu is.
    int ReadMenuItem(const NibNode& node, NibMenu& menu, int depth)
    {
        const NibNode* const object = Require(node);
        if (!object || !Place(*object, 0))
            return 0;
        NibMenuItem& item = menu.items.emplace_back();
        KnownMenu submenu;
        ForEachChild(*object, [&](const NibNode& value) {
            if (value.key == "submenu")
                submenu = ReadMenu(value, depth + 1);
            else if (value.key == "keyEquivalent")
                item.keyEquivalent = UnescapeNibText(value.text); // a return is a key here, no line break
            else
                Take(kMenuItemFields, value, item);
        });
        item.submenu = std::move(submenu.menu);
        if (item.keyEquivalent == std::string_view("\0", 1))
            item.keyEquivalent.clear(); // how the files write "no key"
        return submenu.height;
    }

    // Controls.

    static void SetClassDefaults(NibControl& control)
    {
        switch (control.kind) {
        case NibClass::CheckBox:
        case NibClass::RadioButton:
            control.maximum = 2;
            break;
        case NibClass::Slider:
        case NibClass::ScrollBar:
        case NibClass::LittleArrows:
        case NibClass::ProgressBar:
            control.maximum = 100;
            break;
        case NibClass::Triangle:
            control.maximum = 1;
            break;
        case NibClass::PopupButton:
        case NibClass::Tab:
            control.minimum = 1;
            control.value = 1;
            break;
        case NibClass::Picture:
            control.dontTrack = true;
            break;
        case NibClass::Icon:
            control.dontTrack = true;
            control.contentType = 2;
            control.contentResource = 1;
            break;
        case NibClass::ImageWell:
            control.contentType = 2;
            break;
        default:
            break;
        }
    }

    /// @param parent  the control that holds this one; null for a window's content view.
    void ReadControl(const NibNode& node, const NibControl* parent, int depth, NibControl& control)
    {
        const NibNode* const object = Require(node);
        if (!object || !Place(*object, depth))
            return;
        control.className = UnescapeNibText(object->className);
        control.kind = ClassNamed(control.className);
        control.objectId = object->id;
        SetClassDefaults(control);
        Unfinished rest;
        ForEachChild(*object, [&](const NibNode& value) {
            if (!Take(kControlFields, value, control) && !Take(kHelpTagFields, value, control.helpTag))
                TakeSpecial(value, control, rest);
        });
        control.alpha = std::clamp(control.alpha, 0.0, 1.0);
        control.tickMarks = std::clamp(control.tickMarks, 0, kMaximumTickMarks);
        FinishBounds(rest, parent, control);
        FinishItems(*object, rest, control);
        if (rest.subviews) {
            ForEachChild(*rest.subviews, [&](const NibNode& child) {
                ReadControl(child, &control, depth + 1, control.children.emplace_back());
            });
        }
        if (rest.tabItems)
            ReadTabs(*rest.tabItems, control);
    }

    void TakeSpecial(const NibNode& value, NibControl& control, Unfinished& rest)
    {
        const std::string_view key = value.key;
        if (key == "bounds")
            rest.bounds = &value;
        else if (key == "viewFrame")
            rest.viewFrame = &value;
        else if (key == "subviews")
            rest.subviews = &value;
        else if (key == "tabItems")
            rest.tabItems = &value;
        else if (key == "radioTitles")
            rest.radioTitles = &value;
        else if (key == "selectedRow")
            Read(value, rest.selectedRow);
        else if (key == "selectedCol")
            Read(value, rest.selectedColumn);
        else if (key == "menu")
            control.menu = ReadMenu(value, 0).menu;
        else if (key == "list")
            control.list = ReadStrings(value);
        else if (key == "foreColor")
            control.foreColor = ReadColor(value);
        else if (key == "layoutInfo")
            ForEachChild(value, [&, layout = &control.layout.emplace()](const NibNode& binding) {
                Take(kLayoutFields, binding, *layout);
            });
        else if (key == "listViewColumns")
            ForEachChild(value, [&](const NibNode& column) { ReadListColumn(column, control); });
        else if (key == "auxiliaryDictionary")
            ReadProperties(value, control);
        else
            TakeChoice(value, control);
    }

    /// Takes the keys whose number or flag chooses among a few names; a number without a name means the first.
    void TakeChoice(const NibNode& value, NibControl& control)
    {
        bool flag = false;
        if (value.key == "small") {
            Read(value, flag);
            if (flag && control.size == NibControlSize::Normal)
                control.size = NibControlSize::Small;
        } else if (value.key == "collapsed") {
            Read(value, flag);
            control.value = flag ? 0 : 1;
        } else if (value.key == "controlSize") {
            control.size = ReadChoice<NibControlSize>(value, 3);
        } else if (value.key == "buttonType") {
            control.buttonType = ReadChoice<NibButtonType>(value, 2);
        } else if (value.key == "titleType") {
            control.groupTitle = ReadChoice<NibGroupTitle>(value, 2);
        } else if (value.key == "size") {
            control.large = ReadChoice<std::uint8_t>(value, 1) != 0;
        }
    }

    template <typename Choice>
    Choice ReadChoice(const NibNode& node, std::int32_t last)
    {
        std::int32_t number = 0;
        Read(node, number);
        return static_cast<Choice>(number < 0 || number > last ? 0 : number);
    }

    std::optional<NibColor> ReadColor(const NibNode& node)
    {
        const auto numbers = Numbers<3>(node.text);
        if (!numbers) {
            FailValue(node, "colour");
            return std::nullopt;
        }
        const auto part = [&](std::size_t index) {
            return static_cast<std::uint16_t>(std::clamp<std::int64_t>((*numbers)[index], 0, UINT16_MAX));
        };
        return NibColor{part(0), part(1), part(2)};
    }

    /// `viewFrame` (left, top, width, height within the parent) serves where `bounds` is missing.
    void FinishBounds(const Unfinished& rest, const NibControl* parent, NibControl& control)
    {
        if (rest.bounds) {
            control.bounds = ReadRect(*rest.bounds);
        } else if (rest.viewFrame) {
            const auto numbers = Numbers<4>(rest.viewFrame->text);
            if (!numbers) {
                FailValue(*rest.viewFrame, "rectangle");
                return;
            }
            const auto limited = [&](std::size_t index) {
                return std::int64_t{Coordinate((*numbers)[index])};
            };
            const std::int64_t left = limited(0) + (parent ? parent->bounds.left : 0);
            const std::int64_t top = limited(1) + (parent ? parent->bounds.top : 0);
            control.bounds = {Coordinate(top), Coordinate(left), Coordinate(top + limited(3)),
                              Coordinate(left + limited(2))};
        }
    }

    /// Sets the limits that follow from the items of menus and radio groups.
    void FinishItems(const NibNode& object, const Unfinished& rest, NibControl& control)
    {
        if (control.kind == NibClass::RadioGroup)
            FinishRadioGroup(object, rest, control);
        if (control.kind == NibClass::GroupBox && control.groupTitle == NibGroupTitle::CheckBox)
            control.maximum = 2;
        if (control.kind == NibClass::GroupBox && control.groupTitle == NibGroupTitle::PopupButton) {
            control.minimum = 1;
            control.value = std::max(control.value, 1);
        }
        const bool showsMenu = control.kind == NibClass::PopupButton || control.kind == NibClass::GroupBox;
        if (showsMenu && control.menu)
            control.maximum = static_cast<std::int32_t>(control.menu->items.size());
    }

    void FinishRadioGroup(const NibNode& object, const Unfinished& rest, NibControl& control)
    {
        const std::int64_t rows = control.rows;
        const std::int64_t count = rows * control.columns;
        if (rows < 1 || control.columns < 1 || count > kMaximumRadioButtons) {
            Fail(object, "a radio group without buttons or with more than " + std::to_string(kMaximumRadioButtons));
            return;
        }
        Count(object, static_cast<std::size_t>(count));
        control.minimum = 1;
        control.maximum = static_cast<std::int32_t>(count);
        control.value = static_cast<std::int32_t>(
            std::clamp<std::int64_t>(rest.selectedRow + rows * (std::int64_t{rest.selectedColumn} - 1), 0, count));
        control.radioTitles.resize(static_cast<std::size_t>(count));
        if (!rest.radioTitles)
            return;
        std::int64_t row = 0;
        ForEachChild(*rest.radioTitles, [&](const NibNode& titles) {
            std::int64_t column = 0;
            ForEachChild(titles, [&](const NibNode& title) {
                if (row < rows && column < control.columns)
                    Read(title, control.radioTitles[static_cast<std::size_t>(row + rows * column)]);
                ++column;
            });
            ++row;
        });
    }

    void ReadTabs(const NibNode& array, NibControl& control)
    {
        ForEachChild(array, [&](const NibNode& dictionary) {
            if (control.tabs.size() == kMaximumTabs) {
                Fail(dictionary, "more than " + std::to_string(kMaximumTabs) + " tabs");
                return;
            }
            NibTabItem& tab = control.tabs.emplace_back();
            ForEachPair(dictionary, [&](const std::string& key, const NibNode& value) {
                if (key == "tabName")
                    Read(value, tab.name);
                else if (key == "tabEnabled")
                    tab.enabled = value.text != "0" && value.text != "FALSE";
                else if (key == "contentResID")
                    tab.contentResource = NumberOrZero(value.text);
                else if (key == "userPane")
                    tab.pane = IndexOfChild(control, value.id);
            });
        });
        control.maximum = static_cast<std::int32_t>(control.tabs.size());
    }

    static std::optional<std::size_t> IndexOfChild(const NibControl& control, std::uint32_t objectId)
    {
        const auto found = std::find_if(control.children.begin(), control.children.end(),
                                        [=](const NibControl& child) { return child.objectId == objectId; });
        if (objectId == 0 || found == control.children.end())
            return std::nullopt;
        return static_cast<std::size_t>(found - control.children.begin());
    }

    void ReadListColumn(const NibNode& node, NibControl& control)
    {
        const NibNode* const object = Require(node);
        if (!object || !Place(*object, 0))
            return;
        NibListColumn& column = control.listColumns.emplace_back();
        ForEachChild(*object, [&](const NibNode& value) { Take(kListColumnFields, value, column); });
    }

    /// The properties stand in four arrays side by side; the shortest decides.
    void ReadProperties(const NibNode& dictionary, NibControl& control)
    {
        std::vector<std::string> creators, tags, types, values;
        ForEachPair(dictionary, [&](const std::string& key, const NibNode& array) {
            if (key == "creators")
                creators = ReadStrings(array);
            else if (key == "tags")
                tags = ReadStrings(array);
            else if (key == "types")
                types = ReadStrings(array);
            else if (key == "values")
                values = ReadStrings(array);
        });
        const std::size_t count = std::min({creators.size(), tags.size(), types.size(), values.size()});
        for (std::size_t index = 0; index < count; ++index)
            control.properties.push_back({creators[index], tags[index], types[index], values[index]});
    }

    // Windows.

    /// Answers the table of names; null when the file is no Carbon nib.
    const NibNode* CheckRoot()
    {
        const NibNode& root = m_tree.front();
        if (root.element != NibElement::Object || root.className != "NSIBObjectData") {
            Fail(root, "not a Carbon nib: its root is no object of class NSIBObjectData");
            return nullptr;
        }
        const NibNode* names = nullptr;
        ForEachChild(root, [&](const NibNode& value) {
            if (value.key == "targetFramework" && value.text != "IBCarbonFramework")
                Fail(value, "a nib for another framework: " + std::string(value.text.substr(0, 40)));
            else if (value.key == "nameTable")
                names = &value;
        });
        if (!names)
            Fail(root, "no nameTable in it");
        return names;
    }

    void ReadNames(const NibNode& table)
    {
        auto& names = m_document.m_names;
        ForEachPair(table, [&](std::string name, const NibNode& value) {
            if (const NibNode* const object = Resolve(value))
                names.emplace_back(std::move(name), WindowOf(*object));
        });
        std::stable_sort(names.begin(), names.end(),
                         [](const auto& one, const auto& other) { return one.first < other.first; });
        names.erase(std::unique(names.begin(), names.end(),
                                [](const auto& one, const auto& other) { return one.first == other.first; }),
                    names.end());
    }

    std::size_t WindowOf(const NibNode& object)
    {
        if (object.className != "IBCarbonWindow")
            return NibDocument::kNoWindow;
        const auto [known, isNew] = m_windows.try_emplace(&object, m_document.m_windows.size());
        if (isNew)
            ReadWindow(object, m_document.m_windows.emplace_back());
        return known->second;
    }

    void ReadWindow(const NibNode& object, NibWindow& window)
    {
        bool hasRect = false;
        bool hasRoot = false;
        ForEachChild(object, [&](const NibNode& value) {
            if (Take(kWindowFields, value, window) || Take(kHelpTagFields, value, window.helpTag))
                return;
            if (value.key == "windowRect") {
                window.content = ReadRect(value);
                hasRect = true;
            } else if (value.key == "rootControl") {
                ReadControl(value, nullptr, 0, window.root);
                hasRoot = true;
            }
        });
        if (!hasRect || !hasRoot)
            Fail(object, std::string("a window without its ") + (hasRect ? "rootControl" : "windowRect"));
        if (window.metal)
            window.themeBrush.reset();
        else if (!window.themeBrush)
            SetClassBrush(window);
    }

    static void SetClassBrush(NibWindow& window)
    {
        for (const auto& known : kClassBrushes) {
            if (known.windowClass == window.windowClass)
                window.themeBrush = known.brush;
        }
    }

    std::string_view m_bytes;
    const NibTree& m_tree;
    NibProblem& m_problem;
    bool m_failed = false;
    std::vector<const NibNode*> m_objects; // those with an id, sorted by it
    std::vector<bool> m_placed;            // by index in the tree
    std::size_t m_count = 0;
    std::map<const NibNode*, KnownMenu> m_menus;
    std::map<const NibNode*, std::size_t> m_windows;
    NibDocument m_document;
};

std::vector<std::string> NibDocument::WindowNames() const
{
    std::vector<std::string> names;
    for (const auto& [name, window] : m_names) {
        if (window != kNoWindow)
            names.push_back(name);
    }
    return names;
}

const NibWindow* NibDocument::FindWindow(std::string_view name, NibLookup& result) const
{
    const auto found =
        std::lower_bound(m_names.begin(), m_names.end(), name,
                         [](const auto& entry, std::string_view wanted) { return entry.first < wanted; });
    if (found == m_names.end() || found->first != name) {
        result = NibLookup::NoSuchObject;
        return nullptr;
    }
    result = found->second == kNoWindow ? NibLookup::AnotherClass : NibLookup::Found;
    return result == NibLookup::Found ? &m_windows[found->second] : nullptr;
}

std::optional<NibDocument> ReadNib(std::string_view bytes, NibProblem& problem)
{
    const std::optional<NibTree> tree = ReadNibTree(bytes, problem);
    return tree ? CNibBuilder(bytes, *tree, problem).Build() : std::nullopt;
}
