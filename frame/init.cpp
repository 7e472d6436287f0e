// The library's load and unload entries: the only entries of its init and
// fini arrays (the library links without start files and has no static
// constructors). A stub called before my_init runs on m7.
#include "orvcore.h"

namespace {

OrvStatus my_init() { return orvStaticInit(); }  // the status is not kept
void my_fini() {}

using InitFn = OrvStatus (*)();
using FiniFn = void (*)();
__attribute__((section(".init_array"), used)) const InitFn kInit = my_init;
__attribute__((section(".fini_array"), used)) const FiniFn kFini = my_fini;

}  // namespace
