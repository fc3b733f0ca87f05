// Built only by the test that expects it not to compile: the editing room does not link the
// editor room, so the editor's headers are out of its reach.
#include "editing/tpscripttext.h"
#include "editor/tpcodeeditor.h"
