// Dark and light: the palettes of the console and the colours that follow them.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

#include <optional>

#include "keel0/logging.h"

enum class StyleChoice
{
	System, // whichever of the two the desktop's own palette is closer to
	Dark,
	Light
};

// The names on the command line and in the settings: "system", "dark", "light".
const char *StyleName( StyleChoice choice );
std::optional<StyleChoice> ParseStyleName( const QString &name );

// Switches the whole application. Keeps the desktop's palette of the first call to follow it later.
void ApplyStyle( StyleChoice choice );

// What the application shows now.
bool IsDarkStyleActive();

QPalette DarkPalette();
QPalette LightPalette();

// For lines of text on the palette's base colour; all are well readable on it.
QColor SeverityColour( LoggingSeverity severity, bool bDark );
QColor FaintTextColour( bool bDark );

// Points per inch of the screen's text against the usual 96; > 0.
float ScreenUIScale();
