// frame/ProductManager.h
//
// The class of the process's one object.
#ifndef FRAME_PRODUCTMANAGER_H
#define FRAME_PRODUCTMANAGER_H

#include "frame/BaseProductManager.h"

/// Adds no state; holds the critical region over all of Init and InfoDialog.
class __attribute__((visibility("default"))) CProductManager : public CBaseProductManager {
public:
    ~CProductManager() override;
    int Init(void* hostContext, const char* helpFolder) override;
    void InfoDialog(WindowRef parent, bool hideKnobOption) override;
};

#endif
