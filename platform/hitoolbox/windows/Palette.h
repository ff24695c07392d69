// platform/hitoolbox/windows/Palette.h
//
// The colours of windows and controls, light and dark.
#pragma once

#include "platform/drawing/ICanvas.h"

struct Palette {
    Colour window, text;
    Colour face, faceEdge, shadow; ///< Push buttons, pop-ups, unchecked boxes.
    Colour hover, pressed;         ///< Laid over a face.
    Colour accentTop, accentBottom, onAccent;
    Colour accentEdge;
    Colour field, fieldEdge, lockedField;
    Colour selection, selectedText, idleSelection;
    Colour focus;
    Colour separator, groupFill;
    Colour track;
    double disabled; ///< Opacity of what is disabled.
};

// clang-format off: one subject a line
constexpr Palette kLightPalette = {
    {0xF6F6F7FF}, {0x1D1D20FF}, {0xFFFFFFFF}, {0x0000002B}, {0x00000014}, {0x0000000A}, {0x0000001F}, {0x3B7DEBFF},
    {0x2767DAFF}, {0xFFFFFFFF}, {0x1D56BEFF}, {0xFFFFFFFF}, {0x00000033}, {0xFAFAFBFF}, {0xB7D3FBFF}, {0x1D1D20FF},
    {0xDCDCDFFF}, {0x3B7DEB8C}, {0x0000001C}, {0x00000009}, {0x00000021}, 0.38,
};

constexpr Palette kDarkPalette = {
    {0x2A2A2DFF}, {0xF1F1F4FF}, {0x4A4A4FFF}, {0xFFFFFF21}, {0x00000047}, {0xFFFFFF0F}, {0x00000038}, {0x4B8BF5FF},
    {0x3573E0FF}, {0xFFFFFFFF}, {0xFFFFFF24}, {0x1D1D1FFF}, {0xFFFFFF33}, {0x252528FF}, {0x2F5FAFFF}, {0xFFFFFFFF},
    {0x48484DFF}, {0x5A98FFA6}, {0xFFFFFF21}, {0xFFFFFF0B}, {0xFFFFFF2B}, 0.36,
};
// clang-format on
