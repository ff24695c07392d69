// platform/hitoolbox/nib/NibRecords.h
//
// What a Carbon nib says about its windows, controls and menus, as plain records with every default
// filled in. NibReader makes them; what becomes of them on a screen is left to windows/.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A rectangle as the Mac's Rect has it; coordinates outside 16 bits are limited to them.
struct NibRect {
    std::int16_t top = 0, left = 0, bottom = 0, right = 0;
};

/// Each part 0 to 65535.
struct NibColor {
    std::uint16_t red = 0, green = 0, blue = 0;
};

struct NibHelpTag {
    std::string text;
    std::string extendedText;
    std::int32_t displaySide = 0;
};

/// How a control follows its parent's edges: 0 not at all, 1 the top or left, 2 the bottom or right.
struct NibLayout {
    std::int32_t top = 0, left = 0, bottom = 0, right = 0;
};

/// A control property that the nib sets. Type 0 string, 1 C string, 2 boolean, 5 four-char code, 6 signed
/// and 7 unsigned number; the value is in text whatever its type.
struct NibProperty {
    std::string creator, tag, type, value;
};

struct NibMenu;

struct NibMenuItem {
    std::string title;
    std::uint32_t command = 0;              ///< four-char code, 0 for none
    std::string keyEquivalent;              ///< one character, upper case means Shift; empty for none
    std::int32_t keyModifiers = 1048576;    ///< 131072 Shift, 262144 Control, 524288 Option, 1048576 Command
    std::shared_ptr<const NibMenu> submenu; ///< null for none; menus never hold themselves
    bool separator = false;
    bool checked = false;
    bool disabled = false;
    bool dynamic = false;
    bool updateSingleItem = false;
    bool notPreviousAlternate = false;
    bool hidden = false;
};

struct NibMenu {
    std::string title;
    std::string specialName; ///< for example `_NSAppleMenu`; mostly empty
    std::int32_t menuId = 0;
    bool autoDisable = false;
    bool hidden = false;
    bool excludesMarkColumn = false;
    std::vector<NibMenuItem> items;
};

struct NibTabItem {
    std::string name;
    bool enabled = true;
    std::int32_t contentResource = 0;
    std::optional<std::size_t> pane; ///< index of its pane among the tab control's children
};

/// A column of a data browser's list view.
struct NibListColumn {
    std::uint32_t property = 0, propertyType = 0; ///< four-char codes
    std::int32_t propertyFlags = 0;
    std::string title;
    std::int32_t minimumWidth = 0, maximumWidth = 0, sortOrder = 0, textAlignment = 0;
};

/// The class of a control; `Unknown` is a plain pane.
enum class NibClass : std::uint8_t {
    Unknown,
    RootControl,
    Button,
    CheckBox,
    RadioButton,
    StaticText,
    EditText,
    ImageView,
    Picture,
    Icon,
    ImageWell,
    Separator,
    GroupBox,
    UserPane,
    HIView,
    Custom,
    PopupButton,
    RadioGroup,
    Tab,
    Slider,
    ScrollBar,
    LittleArrows,
    ProgressBar,
    ChasingArrows,
    Triangle,
    BevelButton,
    RoundButton,
    ComboBox,
    ScrollView,
    TextView,
    DataBrowserList,
    DataBrowserColumns,
    SearchField,
    SegmentedView,
    ClockDate,
    PopupArrow,
    RelevanceBar,
};

/// `Default` is pressed by Return, `Cancel` by Escape.
enum class NibButtonType : std::uint8_t { Plain, Default, Cancel };
enum class NibControlSize : std::uint8_t { Normal, Small, Large, Mini };
enum class NibGroupTitle : std::uint8_t { Text, CheckBox, PopupButton };

/// One control with all that a nib can say about any class; what a class does not use keeps its default.
struct NibControl {
    // Every class.
    NibClass kind = NibClass::Unknown;
    std::string className;       ///< as the file has it, also of a class that is not known
    std::uint32_t objectId = 0;  ///< the object's number in the file; 0 for none
    NibRect bounds;              ///< relative to the window's content at every depth
    std::uint32_t signature = 0; ///< first half of the ControlID
    std::int32_t id = 0;         ///< second half of the ControlID
    std::uint32_t command = 0;   ///< four-char code, 0 for none
    std::string title;           ///< also the text of static and edit text; lines end in LF
    bool enabled = true;
    bool hidden = false;
    NibControlSize size = NibControlSize::Normal;
    std::optional<std::int32_t> fontStyle; ///< absent: the class's own font
    std::int32_t justification = 0;        ///< 0 by the script, 1 centre, -1 right, -2 left
    std::optional<NibColor> foreColor;
    NibHelpTag helpTag;
    std::optional<NibLayout> layout;
    bool layoutSuspended = false;
    std::vector<NibProperty> properties;
    std::vector<NibControl> children; ///< back to front

    // Whatever has a value. A check or radio button has 0 to 2, a triangle 0 closed and 1 open; menus, tabs and
    // radio groups have the number of the item chosen, from 1. The value may lie outside its limits.
    std::int32_t value = 0, minimum = 0, maximum = 0;
    bool autoToggle = true;

    // Buttons, pictures, icons and wells.
    NibButtonType buttonType = NibButtonType::Plain;
    std::int32_t contentType = 0;     ///< 1 icon suite, 2 colour icon, 3 picture, 4 icon, 132 icon of type and creator
    std::int32_t contentResource = 0; ///< a resource's number, or the type of an icon of type and creator
    std::int32_t creator = 0;
    std::int32_t iconPosition = 0;
    std::int32_t iconType = 0, iconCreator = 0;
    std::int32_t contentTransform = 0;
    bool dontTrack = false;
    bool dropTarget = false;

    // Bevel and round buttons.
    std::int32_t bevelThickness = 0;
    std::int32_t behavior = 0; ///< bits: 256 toggles, 512 sticky, 32768 offsets its contents
    std::int32_t textPlacement = 0, textAlignment = 0, graphicAlignment = 0;
    bool rounded = false;
    bool large = false;

    // Edit text, text views.
    bool isPassword = false, isUnicode = false, isSingleLine = false, useInlineInput = false;
    bool readOnly = false, wrap = false, outputInUnicode = false, noSelection = false;

    // Image views, which start empty.
    bool opaque = true;
    bool scaleToFit = false;
    double alpha = 1.0; ///< within 0 to 1

    // Group boxes and panes.
    bool primary = true;
    NibGroupTitle groupTitle = NibGroupTitle::Text;
    std::int32_t featureBits = 0; ///< 2 embedding, 16 wants activation, 4096 drag and drop, summed

    // A view class of a program's own.
    std::string classId;
    std::int32_t controlDefType = 0, definitionResource = 0, variation = 0;
    bool allowsSubviews = false;

    // Pop-up menus, whatever shows them.
    std::shared_ptr<const NibMenu> menu; ///< null for none; controls may share one
    std::int32_t titleJustification = 0;
    bool variableWidth = false;

    // Radio groups: `rows` times `columns` titles, column after column, so that value 1 is the first.
    std::vector<std::string> radioTitles;
    std::int32_t rows = 2, columns = 1, intercellHeight = 2;

    // Tabs.
    std::vector<NibTabItem> tabs;
    std::int32_t direction = 0; ///< 0 north
    bool autoLayoutPanes = false;

    // Sliders, scroll bars, arrows, progress.
    std::int32_t tickMarks = 0;   ///< within 0 to 1024
    std::int32_t orientation = 0; ///< 0 points down or right, 1 up or left, 2 does not point
    bool isLive = false;
    std::int32_t viewSize = 0;
    std::int32_t increment = 1;
    bool indeterminate = true;

    // Triangles.
    bool drawTitle = false;

    // Combo boxes.
    std::vector<std::string> list;
    bool autoSort = false, autoCompletion = true, autoDisclosure = true, autoSizeList = true;

    // Scroll views and data browsers.
    bool scrollHorizontally = true, scrollVertically = true, autoHideScrollBars = false;
    bool showFocusRing = true;
    std::vector<NibListColumn> listColumns;
    std::int32_t selectionFlags = 0, hiliteStyle = 0, columnWidth = 0;
};

/// A window as the nib has it. Title bar widgets that its class does not allow may be set: drop them.
struct NibWindow {
    NibRect content; ///< content area in screen coordinates
    std::string title;
    std::int32_t windowClass = 6; ///< the WindowClass numbers; 6 is a document window
    std::int32_t position = 0;    ///< 0 as in `content`, 1 centred, 2 to 10 as the window positions are numbered
    std::optional<std::int32_t> themeBrush; ///< background, by class where the file has none; absent: white or metal
    bool hasCloseBox = true;
    bool hasCollapseBox = true;
    bool hasHorizontalZoom = true;
    bool hasVerticalZoom = true;
    bool isResizable = true;
    bool isConstrained = true;
    bool standardHandler = true;
    bool receiveUpdates = true;
    bool receiveActivates = true;
    bool compositing = false;
    bool liveResize = false;
    bool metal = false;
    bool toolbarButton = false;
    bool asyncDrag = false;
    bool hasSideTitle = false;
    std::optional<bool> doesNotCycle, inWindowMenu, hideOnSuspend, hideOnFullScreen, hasShadow; ///< absent: by class
    std::int32_t scalingMode = 0;
    std::optional<std::int32_t> minimumWidth, minimumHeight, maximumWidth, maximumHeight;
    NibHelpTag helpTag;
    NibControl root; ///< the content view; its children are the window's controls
};
