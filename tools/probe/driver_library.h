// The driver, loaded at run time as a host does it.
#ifndef TAVMIR_PROBE_DRIVER_LIBRARY_H
#define TAVMIR_PROBE_DRIVER_LIBRARY_H

#include "tavmir_kx_tcp/host_interface.h"

#include <string>
#include <vector>

namespace tavmir
{
namespace probe
{

// The entry points that a read needs; null until resolved.
struct DriverCalls {
    void (*setComInfo)(ComInfo*);
    void (*registerCallbacks)(VarDoneCallback, CommFailCallback);
    void (*passLabels)(QList<Label_Type_Info>*);
    int (*rebuildReadList)(QList<HOSTVAR>*);
    Protocol* (*nextRequest)();
    RW_VAR* (*takeAnswer)(QByteArray*, int);
    int (*getValues)(const QString&, int, int, int, QByteArray*, int);
};

// The library from loading to unloading. One thread.
class DriverLibrary
{
public:
    DriverLibrary();
    ~DriverLibrary();

    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    // Loads `file`, or with an empty name the library beside this program, else the one that was
    // installed with it, else the one that the loader finds.
    // A library that is made for the other Qt is refused before it can do harm, when its file is
    // known beforehand.
    //   result  empty, or what is wrong, mostly in the loader's words
    std::string load(const std::string& file);

    // The loaded file with symbolic links resolved; its name ends in the version.
    std::string path() const;

    // The part of the path behind ".so.", or "unknown".
    std::string version() const;

    // Every name that a host may look up: entry points, globals, C++ entry points.
    static std::vector<std::string> expectedNames();

    // Those of them that the library does not export.
    std::vector<std::string> missingNames() const;

    // All entry points of a read; only after missingNames() was empty.
    DriverCalls calls() const;

private:
    void* handle;
};

} // namespace probe
} // namespace tavmir

#endif
