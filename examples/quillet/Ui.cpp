// Ui.cpp
//
// The plug-in's window as an LV2 interface for X11: what the host gives it, what it gives back.
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Panel.h"
#include "Ports.h"
#include "Services.h"
#include "Window.h"
#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

namespace {

using namespace quillet;

constexpr Port kKnobPorts[kKnobCount] = {kGainPort, kTonePort};
constexpr unsigned int kHelpTopic = 300;
constexpr double kLargestScale = 8.0;

void* FeatureData(const LV2_Feature* const* features, const char* uri)
{
    for (; features && *features; ++features) {
        if (std::strcmp((*features)->URI, uri) == 0)
            return (*features)->data;
    }
    return nullptr;
}

// The pixels per point that the host asks for; 1 where it says nothing or nonsense.
double ScaleOf(const LV2_Feature* const* features)
{
    const auto* const map = static_cast<const LV2_URID_Map*>(FeatureData(features, LV2_URID__map));
    const auto* option = static_cast<const LV2_Options_Option*>(FeatureData(features, LV2_OPTIONS__options));
    if (!map || !option)
        return 1.0;
    const LV2_URID scaleFactor = map->map(map->handle, LV2_UI__scaleFactor);
    const LV2_URID number = map->map(map->handle, LV2_ATOM__Float);
    for (; option->key || option->value; ++option) {
        if (option->key != scaleFactor || option->type != number || option->size != sizeof(float) || !option->value)
            continue;
        float scale = 0;
        std::memcpy(&scale, option->value, sizeof scale);
        if (scale >= 0.5F && scale <= static_cast<float>(kLargestScale))
            return static_cast<double>(scale);
    }
    return 1.0;
}

class CUi {
public:
    CUi(std::string folder, LV2UI_Write_Function write, LV2UI_Controller controller)
        : m_write(write),
          m_controller(controller),
          m_services(CServices::Load(folder)),
          m_panel({[this](int knob, float value) { Tell(knob, value); },
                   [this](Button button) { m_pressed.push_back(button); },
                   [this] {
                       return UsersDragKind();
                   }})
    {
        m_panel.OfferServices(m_services != nullptr);
        m_panel.SetDragKind(UsersDragKind());
        if (m_services)
            m_services->OnDialogEnd([this] { m_panel.SetDragKind(UsersDragKind()); });
    }

    bool Open(std::uint64_t parent, double scale)
    {
        m_parent = parent;
        m_window = CWindow::Open(static_cast<xcb_window_t>(parent), scale, m_panel);
        return m_window != nullptr;
    }
    const CWindow& Window() const { return *m_window; }

    void PortChanged(std::uint32_t port, float value)
    {
        for (int knob = 0; knob < kKnobCount; ++knob) {
            if (kKnobPorts[knob] == port)
                m_panel.SetValue(knob, value);
        }
    }

    // What a button opens may serve the host's loop meanwhile, which may call us again; so it is
    // opened when the window's input is done with.
    bool Idle()
    {
        const bool alive = m_window->Serve();
        if (m_services) {
            for (const Button button : std::exchange(m_pressed, {}))
                OpenFor(button);
            m_services->Pump();
        }
        return alive;
    }

private:
    DragKind UsersDragKind() const
    {
        return m_services && m_services->Manager().KnobsDragVertical() ? DragKind::Vertical : DragKind::Circular;
    }

    void Tell(int knob, float value) { m_write(m_controller, kKnobPorts[knob], sizeof value, 0, &value); }

    void OpenFor(Button button)
    {
        if (button == Button::Help)
            m_services->OpenHelp(kHelpTopic);
        else
            m_services->OpenInfoDialog(m_parent);
    }

    LV2UI_Write_Function m_write;
    LV2UI_Controller m_controller;
    std::unique_ptr<CServices> m_services;
    std::vector<Button> m_pressed;
    CPanel m_panel;
    std::unique_ptr<CWindow> m_window;
    std::uint64_t m_parent = 0;
};

LV2UI_Handle Instantiate(const LV2UI_Descriptor*, const char* pluginUri, const char* folder, LV2UI_Write_Function write,
                         LV2UI_Controller controller, LV2UI_Widget* widget, const LV2_Feature* const* features)
{
    void* const parent = FeatureData(features, LV2_UI__parent);
    if (std::strcmp(pluginUri, kPluginUri) != 0 || !parent)
        return nullptr;
    auto ui = std::make_unique<CUi>(folder, write, controller);
    if (!ui->Open(reinterpret_cast<std::uintptr_t>(parent), ScaleOf(features)))
        return nullptr;
    const CWindow& window = ui->Window();
    if (const auto* const resize = static_cast<const LV2UI_Resize*>(FeatureData(features, LV2_UI__resize)))
        (void)resize->ui_resize(resize->handle, window.Width(), window.Height()); // the host may keep its size
    *widget = reinterpret_cast<LV2UI_Widget>(static_cast<std::uintptr_t>(window.Id()));
    return ui.release();
}

void Cleanup(LV2UI_Handle handle)
{
    delete static_cast<CUi*>(handle);
}

void PortEvent(LV2UI_Handle handle, std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer)
{
    float value = 0;
    if (format != 0 || size != sizeof value)
        return;
    std::memcpy(&value, buffer, sizeof value);
    static_cast<CUi*>(handle)->PortChanged(port, value);
}

int Idle(LV2UI_Handle handle)
{
    return static_cast<CUi*>(handle)->Idle() ? 0 : 1;
}

const LV2UI_Idle_Interface kIdle = {Idle};

const void* ExtensionData(const char* uri)
{
    return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &kIdle : nullptr;
}

const LV2UI_Descriptor kDescriptor = {kUiUri, Instantiate, Cleanup, PortEvent, ExtensionData};

} // namespace

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(std::uint32_t index)
{
    return index == 0 ? &kDescriptor : nullptr;
}
