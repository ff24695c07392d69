// platform/hitoolbox/windows/TextMetrics.h
//
// How big text is and where its characters stand: what clicks into edit text and the size of alerts
// need to know of fonts. Who draws text answers it; without a drawing a fixed advance does, so that
// tests are the same everywhere.
#pragma once

#include "platform/drawing/Text.h"

/// The metrics in use. Never null.
const ITextMetrics& Metrics() noexcept;
/// Sets the metrics of who draws text, which are never destroyed; null for the fixed ones.
void SetMetrics(const ITextMetrics* metrics) noexcept;
