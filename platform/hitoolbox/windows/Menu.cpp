// platform/hitoolbox/windows/Menu.cpp
//
// Press, drag and release choose as well as click and click; so do the arrow keys and Return.
#include "platform/hitoolbox/windows/Menu.h"

#include <algorithm>
#include <cmath>

#include "platform/base/Guard.h"
#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/windows/Behaviour.h"
#include "platform/hitoolbox/windows/TextMetrics.h"
#include "platform/hitoolbox/windows/Window.h"

namespace {

constexpr int kRowHeight = 22;
constexpr int kBorder = 4;
constexpr int kTextRoom = 44; // beside a row's text: the mark and the margins
constexpr int kMostRows = 20;
constexpr int kMostWidth = 600;

/// The open menu. Items are counted from 1, as the button's value counts them.
struct OpenMenu {
    ControlRef button = nullptr;
    SurfaceId surface = 0; // 0 while none is open
    SurfaceId owner = 0;
    double scale = 1;
    int width = 0;
    int rows = 0;        // shown at a time
    int first = 1;       // the item at the top
    int highlighted = 0; // 0 for none
    int chosen = 0;
    bool dirty = false;
    std::vector<std::string> items;

    int Height() const { return rows * kRowHeight + 2 * kBorder; }
    int Count() const { return static_cast<int>(items.size()); }
};

OpenMenu& TheMenu()
{
    static auto& menu = *new OpenMenu;
    return menu;
}

void Close()
{
    const SurfaceId surface = TheMenu().surface;
    TheMenu() = OpenMenu();
    IDesktop* const desktop = Desktop::Current();
    if (!desktop || surface == 0)
        return;
    if (IPainter* const painter = CurrentPainter())
        painter->Forget(surface);
    desktop->DestroySurface(surface);
}

void Choose(int item, UInt32 modifiers)
{
    const ControlRef button = TheMenu().button;
    Close();
    ChooseItem(button, item, modifiers);
}

// The item at a place in the menu's own surface; 0 for none.
int ItemAt(const OpenMenu& menu, const PointerInput& input)
{
    if (input.surface != menu.surface || input.x < 0 || input.x >= menu.width * menu.scale)
        return 0;
    const double row = std::floor((input.y / menu.scale - kBorder) / kRowHeight);
    return row >= 0 && row < menu.rows ? menu.first + static_cast<int>(row) : 0;
}

void Highlight(OpenMenu& menu, int item)
{
    menu.dirty = menu.dirty || menu.highlighted != item;
    menu.highlighted = item;
}

void ScrollTo(OpenMenu& menu, int first)
{
    const int limited = std::clamp(first, 1, menu.Count() - menu.rows + 1);
    menu.dirty = menu.dirty || menu.first != limited;
    menu.first = limited;
}

WindowView ViewOf(const OpenMenu& menu)
{
    WindowView view;
    view.width = menu.width;
    view.height = menu.Height();
    view.active = true;
    ControlView part;
    part.kind = ControlClass::ImageWell; // a framed field
    part.bounds = {0, 0, static_cast<short>(view.height), static_cast<short>(menu.width)};
    view.controls.push_back(part);
    part.kind = ControlClass::MenuItem;
    for (int row = 0; row < menu.rows; ++row) {
        const int item = menu.first + row;
        const int top = kBorder + row * kRowHeight;
        part.bounds = {static_cast<short>(top), kBorder, static_cast<short>(top + kRowHeight),
                       static_cast<short>(menu.width - kBorder)};
        part.text = menu.items[static_cast<std::size_t>(item - 1)];
        part.value = item == menu.chosen ? 1 : 0;
        part.pressed = item == menu.highlighted;
        view.controls.push_back(part);
    }
    return view;
}

int WidestOf(const std::vector<std::string>& items)
{
    double width = 0;
    for (const std::string& item : items) {
        TextLayout layout;
        layout.text = item;
        width = std::max(width, Metrics().Measure(layout).width);
    }
    return static_cast<int>(std::clamp(std::ceil(width) + kTextRoom, 0.0, static_cast<double>(kMostWidth)));
}

// What is to be opened; with the lock held.
bool Describe(ControlRef reference, OpenMenu& menu, SurfaceRequest& request)
{
    const CControl* const button = Find<CControl>(reference);
    const CWindow* const window = button ? button->window : nullptr;
    if (!window || window->surface == 0 || !window->visible || button->items.empty())
        return false;
    menu.button = reference;
    menu.owner = window->surface;
    menu.scale = window->scale;
    menu.items = button->items;
    menu.chosen = button->value;
    menu.width = std::max(button->bounds.right - button->bounds.left, WidestOf(menu.items));
    menu.rows = std::min(menu.Count(), kMostRows);
    ScrollTo(menu, menu.chosen - menu.rows / 2);
    const auto pixels = [&menu](int points) {
        return static_cast<int>(std::lround(points * menu.scale));
    };
    request.frame = {pixels(button->bounds.left), pixels(button->bounds.bottom + kBorder), pixels(menu.width),
                     pixels(menu.Height())};
    request.clear = pixels(button->bounds.bottom + kBorder) - pixels(button->bounds.top - kBorder);
    request.placement = Placement::Menu;
    request.owner = window->surface;
    return true;
}

bool IsOrphaned(const OpenMenu& menu)
{
    const CToolboxLock lock;
    const CControl* const button = Find<CControl>(menu.button);
    return !button || !button->IsShown() || !button->IsUsable() || !button->window || !button->window->visible ||
           Windows::BlockerOf(*button->window);
}

} // namespace

bool Menu::Open(ControlRef button)
{
    Close();
    IDesktop* const desktop = Desktop::Current();
    OpenMenu menu;
    SurfaceRequest request;
    {
        const CToolboxLock lock;
        if (!desktop || !Describe(button, menu, request))
            return false;
    }
    menu.surface = desktop->CreateSurface(request);
    if (menu.surface == 0)
        return false;
    menu.dirty = true;
    const SurfaceId surface = menu.surface;
    TheMenu() = std::move(menu);
    Update(); // so that the first thing on the screen is the picture
    desktop->ShowSurface(surface);
    return true;
}

void Menu::Update()
{
    OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return;
    if (IsOrphaned(menu))
        return Close();
    IPainter* const painter = CurrentPainter();
    if (!menu.dirty || !painter)
        return;
    menu.dirty = false;
    painter->Paint(menu.surface, ViewOf(menu), menu.scale,
                   std::max(1, static_cast<int>(std::lround(menu.width * menu.scale))),
                   std::max(1, static_cast<int>(std::lround(menu.Height() * menu.scale))));
}

bool Menu::TakeMove(const PointerInput& input)
{
    OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return false;
    Highlight(menu, ItemAt(menu, input));
    return true;
}

bool Menu::TakePress(const PointerInput& input)
{
    OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return false;
    Highlight(menu, ItemAt(menu, input));
    if (input.surface != menu.surface)
        Close();
    return true;
}

bool Menu::TakeRelease(const PointerInput& input, UInt32 modifiers)
{
    const OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return false;
    // The release of the click that opened it highlighted nothing, and leaves it open.
    const int item = ItemAt(menu, input);
    if (item != 0 && item == menu.highlighted)
        Choose(item, modifiers);
    return true;
}

bool Menu::TakeScroll(const PointerInput& input, double y)
{
    OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return false;
    ScrollTo(menu, menu.first + (y > 0 ? 1 : y < 0 ? -1 : 0));
    Highlight(menu, ItemAt(menu, input)); // another one is under the pointer now
    return true;
}

bool Menu::TakeKey(const KeyInput& input, UInt32 modifiers)
{
    OpenMenu& menu = TheMenu();
    if (menu.surface == 0)
        return false;
    int item = menu.highlighted != 0 ? menu.highlighted : menu.chosen;
    switch (input.symbol) {
    case kKeyEscape:
    case kKeyTab:
        Close();
        return true;
    case kKeyReturn:
    case kKeyKeypadEnter:
    case ' ':
        if (item == 0)
            Close();
        else
            Choose(item, modifiers);
        return true;
    case kKeyUp:
        --item;
        break;
    case kKeyDown:
        item += menu.highlighted != 0 || menu.chosen != 0 ? 1 : 0;
        break;
    case kKeyHome:
        item = 1;
        break;
    case kKeyEnd:
        item = menu.Count();
        break;
    default:
        return true;
    }
    item = std::clamp(item, 1, menu.Count());
    Highlight(menu, item);
    ScrollTo(menu, std::clamp(menu.first, item - menu.rows + 1, item));
    return true;
}

void Menu::TakeFocusLoss(SurfaceId surface)
{
    if (surface == 0 || surface == TheMenu().owner)
        Close();
}

void Menu::TakeLoss(SurfaceId surface)
{
    if (surface != 0 && surface == TheMenu().surface)
        Close();
}

void Menu::TakeExposure(SurfaceId surface)
{
    OpenMenu& menu = TheMenu();
    IPainter* const painter = CurrentPainter();
    if (surface == 0 || surface != menu.surface || !painter)
        return;
    painter->Invalidate(surface);
    menu.dirty = true;
}
