// Layouts (what Qt's save functions give) as texts in the settings, where anything may have happened to them since.
#pragma once

#include <QByteArray>

class KeyValues;

// Writes the bytes under pKey as base64, and under "<pKey>_check" a value by which ReadLayout knows the text again.
void WriteLayout( KeyValues &settings, const char *pKey, const QByteArray &layout );

// What WriteLayout wrote under pKey, for Qt's restore functions; empty when there is nothing. A text that is not the
// one its check value belongs to does not hold, nor does one without a check value (from a version that wrote none)
// unless it is exactly the base64 of bytes that pIsLayout (see layoutformats.h) takes. What does not hold is removed
// from the settings together with its check value, and one Warning says so.
QByteArray ReadLayout( KeyValues &settings, const char *pKey, bool ( *pIsLayout )( const QByteArray & ) );
