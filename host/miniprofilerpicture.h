// The panel of scopes, made ready for a picture.
#pragma once

class QWidget;

// Opens the Show Budget window's mini-profiler as a window of its own, grouped by budget with all groups open, as a
// user would with the mouse. May be called again: groups may have come. Null when the window has none.
QWidget *ArrangeMiniProfiler( QWidget &window );
