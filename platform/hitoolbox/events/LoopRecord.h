// platform/hitoolbox/events/LoopRecord.h
//
// What an EventLoopRef names.
#pragma once

#include "platform/hitoolbox/events/Toolbox.h"
#include <HIToolbox/CarbonEvents.h>

class CLoopRecord final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Loop;
    CLoopRecord() : CRecord(kKind) {}
};
