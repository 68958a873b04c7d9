// Texts that the player shows.
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "recordings/kestofile.h"

// About three significant digits: 12.345 ms is "12.3", 0.05 ms is "0.050", 1500 ms is "1500".
QString FormatMilliseconds( int32_t nMicroseconds );

// Recordings hold 8-bit text.
QString NodeNameText( const CKestoFile &file, int32_t nNode );

// With an invisible place to break the line wherever there is none for 80 characters.
QString BreakableText( const QString &text );

// For a tool tip, which would take what looks like markup for markup and show a long text on one line. What it shows is
// the text.
QString ToolTipText( const QString &text );

// Average, maximum and id of a node.
QString NodeToolTip( const CKestoFile &file, int32_t nNode );

struct NodeMenuEntry
{
	QString m_Text;
	int m_nFrame; // to show when the entry is chosen
};

// The node's slowest frame, and the next frames after nTick that reach a half, a quarter, an eighth and so on of it,
// without consecutive repeats. Only the slowest for nTick < 0, when no frame is shown.
std::vector<NodeMenuEntry> MakeNodeMenu( const CKestoFile &file, int32_t nNode, int nTick );
