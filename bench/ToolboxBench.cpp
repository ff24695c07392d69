// bench/ToolboxBench.cpp
//
// What events, windows of nibs and look-ups cost. Floors: calling the same handlers through
// pointers, reading the nib's bytes, and the same look-up among few controls.
#include <benchmark/benchmark.h>

#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace {

OSStatus PassOn(EventHandlerCallRef, EventRef, void* counter)
{
    ++*static_cast<long*>(counter);
    return eventNotHandledErr;
}

WindowRef MakeWindow()
{
    (void)CVUseHeadlessDesktop(true);
    const Rect bounds = {0, 0, 400, 400};
    WindowRef window = nullptr;
    if (CreateNewWindow(kDocumentWindowClass, kWindowNoAttributes, &bounds, &window) != noErr)
        std::abort();
    return window;
}

ControlRef MakeButton(WindowRef window)
{
    const Rect bounds = {10, 10, 30, 80};
    ControlRef button = nullptr;
    (void)CreatePushButtonControl(window, &bounds, CFSTR("Button"), &button);
    return button;
}

// The floor of sending: the three handlers called by hand.
void CallThreeHandlers(benchmark::State& state)
{
    long calls = 0;
    EventHandlerProcPtr handlers[3] = {PassOn, PassOn, PassOn};
    for (auto _ : state) {
        benchmark::DoNotOptimize(handlers);
        for (const EventHandlerProcPtr handler : handlers)
            benchmark::DoNotOptimize(handler(nullptr, nullptr, &calls));
    }
}
BENCHMARK(CallThreeHandlers);

void SendThroughControlWindowApplication(benchmark::State& state)
{
    const WindowRef window = MakeWindow();
    const ControlRef button = MakeButton(window);
    const EventTypeSpec type = {'test', 1};
    long calls = 0;
    EventHandlerRef application = nullptr;
    (void)InstallControlEventHandler(button, PassOn, 1, &type, &calls, nullptr);
    (void)InstallWindowEventHandler(window, PassOn, 1, &type, &calls, nullptr);
    (void)InstallApplicationEventHandler(PassOn, 1, &type, &calls, &application);
    EventRef event = nullptr;
    (void)CreateEvent(nullptr, 'test', 1, 0, kEventAttributeNone, &event);
    const EventTargetRef target = GetControlEventTarget(button);
    for (auto _ : state)
        benchmark::DoNotOptimize(SendEventToEventTarget(event, target));
    if (calls != static_cast<long>(state.iterations()) * 3)
        state.SkipWithError("a handler was left out");
    ReleaseEvent(event);
    (void)RemoveEventHandler(application);
    DisposeWindow(window);
}
BENCHMARK(SendThroughControlWindowApplication);

void FindControlAmong(benchmark::State& state)
{
    const WindowRef window = MakeWindow();
    const SInt32 count = static_cast<SInt32>(state.range(0));
    for (SInt32 number = 1; number <= count; ++number) {
        const ControlID id = {'ctrl', number};
        (void)SetControlID(MakeButton(window), &id);
    }
    SInt32 number = 0;
    for (auto _ : state) {
        const ControlID id = {'ctrl', number++ % count + 1};
        ControlRef control = nullptr;
        if (GetControlByID(window, &id, &control) != noErr)
            state.SkipWithError("not found");
        benchmark::DoNotOptimize(control);
    }
    DisposeWindow(window);
}
BENCHMARK(FindControlAmong)->Arg(10)->Arg(10000);

// The floor of a window: what of it every reader has to do.
void ReadNibsBytes(benchmark::State& state)
{
    for (auto _ : state) {
        std::ifstream file(CV_NIB_BUNDLE "/Contents/Resources/Dialog.nib/objects.xib", std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        benchmark::DoNotOptimize(bytes.data());
        if (bytes.empty())
            state.SkipWithError("no such nib");
    }
}
BENCHMARK(ReadNibsBytes);

void WindowFromNib(benchmark::State& state)
{
    (void)CVUseHeadlessDesktop(true);
    const std::string folder = CV_NIB_BUNDLE;
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(folder.data()),
                                                           static_cast<CFIndex>(folder.size()), true);
    CFBundleRef bundle = CFBundleCreate(nullptr, url);
    CFRelease(url);
    for (auto _ : state) {
        IBNibRef nib = nullptr;
        WindowRef window = nullptr;
        if (CreateNibReferenceWithCFBundle(bundle, CFSTR("Dialog"), &nib) != noErr ||
            CreateWindowFromNib(nib, CFSTR("Dialog"), &window) != noErr) {
            state.SkipWithError("no window");
            break;
        }
        DisposeNibReference(nib);
        DisposeWindow(window);
    }
    CFRelease(bundle);
}
BENCHMARK(WindowFromNib);

} // namespace

BENCHMARK_MAIN();
