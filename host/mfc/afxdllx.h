/// Stand-in for what the real framework adds to the one source of an extension module that has the entry point:
/// nothing.
#pragma once

#include <afxwin.h>
