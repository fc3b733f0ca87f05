#include "editor/third.h"
#include "editor/first.h"
