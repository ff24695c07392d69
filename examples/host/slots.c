/* slots.c
 *
 * The same bundle from C. An object of the product services begins with the address of a table of
 * its operations; their order is the binary interface (frame/IProductManager.h), and each takes the
 * object first. Only the slots that this program calls have their types here.
 */
#include <dlfcn.h>
#include <stdio.h>

struct Version {
    int major, minor, build;
    const char* notice;
};

struct Services {
    const struct Slots* slots;
};

typedef void (*Unused)(void);

struct Slots {
    Unused QueryInterface, AddRef, Release, Destroy, DestroyAndFree, Init, InfoDialog, SetInfoDialogOptions;
    _Bool (*KnobsDragVertical)(struct Services* self);
    Unused OpenHelp, SetDragVertical;
    const char* (*GetProductName)(struct Services* self);
    struct Version* (*GetProductVersion)(struct Services* self);
};

int main(int count, char** words)
{
    char code[1024];
    snprintf(code, sizeof code, "%s/Contents/MacOS/Quillets", count > 1 ? words[1] : CORVANE_BUNDLE);
    void* image = dlopen(code, RTLD_NOW | RTLD_LOCAL);
    void* symbol = image ? dlsym(image, "GetLibProductManager") : NULL;
    if (!symbol) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    struct Services* (*factory)(void) = NULL;
    *(void**)&factory = symbol; /* C has no cast from an object's address to a function's */

    struct Services* services = factory();
    const struct Version* version = services->slots->GetProductVersion(services);
    printf("%s %d.%d (%d)\n", services->slots->GetProductName(services), version->major, version->minor,
           version->build);
    printf("knobs: %s\n", services->slots->KnobsDragVertical(services) ? "vertical" : "circular");
    dlclose(image);
    return 0;
}
