// tests/frame/com/CFPlugInCOM.h
//
// Stands in for the Mac's header of this name: the names that it declares, with its own E_FAIL.
#ifndef TESTS_FRAME_COM_CFPLUGINCOM_H
#define TESTS_FRAME_COM_CFPLUGINCOM_H

#include <CoreFoundation/CoreFoundation.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
typedef struct {
    UInt8 bytes[16];
} REFIID;

#define SUCCEEDED(status) (static_cast<HRESULT>(status) >= 0)
#define FAILED(status) (static_cast<HRESULT>(status) < 0)
#define S_OK (static_cast<HRESULT>(0x00000000L))
#define S_FALSE (static_cast<HRESULT>(0x00000001L))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80000004L))
#define E_FAIL (static_cast<HRESULT>(0x80000008L))
#define STDMETHODCALLTYPE

class IUnknown {
public:
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, LPVOID* ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() {}
};

#endif
