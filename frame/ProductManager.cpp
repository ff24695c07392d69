// frame/ProductManager.cpp
//
// The concrete class of the one object, and the factory that holds it.
#include "frame/ProductManager.h"

CProductManager::~CProductManager()
{
}

int CProductManager::Init(void* hostContext, const char* folder)
{
    const CCriticalScope scope(*this);
    (void)CBaseProductManager::Init(hostContext, folder);
    return 1;
}

void CProductManager::InfoDialog(WindowRef parent, bool hideKnobOption)
{
    const CCriticalScope scope(*this);
    CBaseProductManager::InfoDialog(parent, hideKnobOption);
}

IProductManager* GetLibProductManager()
{
    static CProductManager productManager;
    return &productManager;
}
