#include "recordings/kestotexts.h"

#include <QTextDocument>
#include <algorithm>
#include <cmath>

#include "keel0/mathlib.h"
#include "text/showntext.h"

static constexpr int LONGEST_LINE = 80; // characters

QString FormatMilliseconds( int32_t nMicroseconds )
{
	const double flMilliseconds = nMicroseconds * 0.001;
	const double flMagnitude = std::abs( flMilliseconds );
	const int nDigits = flMagnitude > 0.0 ? static_cast<int>( V_log10d( flMagnitude ) ) : 0;
	return QString::number( flMilliseconds, 'f', std::clamp( 2 - nDigits, 0, 5 ) );
}

QString NodeNameText( const CKestoFile &file, int32_t nNode )
{
	return QString::fromLatin1( file.GetNodeName( nNode ) );
}

QString BreakableText( const QString &text )
{
	constexpr QChar INVISIBLE_BREAK( 0x200B );
	QString result;
	int nUnbroken = 0;
	for ( const QChar c : text )
	{
		if ( nUnbroken == LONGEST_LINE )
		{
			result += INVISIBLE_BREAK;
			nUnbroken = 0;
		}
		result += c;
		const bool bBreaks = c == ' ' || c == '/' || c == '-';
		nUnbroken = bBreaks ? 0 : nUnbroken + 1;
	}
	return result;
}

QString ToolTipText( const QString &text )
{
	const QString line = ShownText( text );
	if ( line.size() <= LONGEST_LINE && !Qt::mightBeRichText( line ) )
		return line;
	return "<p style=\"white-space:pre-wrap\">" + BreakableText( line ).toHtmlEscaped() + "</p>";
}

QString NodeToolTip( const CKestoFile &file, int32_t nNode )
{
	return QString::asprintf( "ave: %f/call\nmax: %f\nid: %d", file.GetAverageTimePerCall( nNode ) * 0.001,
		file.GetMaximum( nNode ).m_nTime * 0.001, nNode );
}

static NodeMenuEntry MakeEntry( const char *pFormat, const CKestoFile::Maximum &frame )
{
	// Single precision is deliberate.
	const double flMilliseconds = static_cast<float>( frame.m_nTime ) * 0.001f;
	return { QString::asprintf( pFormat, frame.m_nFrame, flMilliseconds ), frame.m_nFrame };
}

std::vector<NodeMenuEntry> MakeNodeMenu( const CKestoFile &file, int32_t nNode, int nTick )
{
	const CKestoFile::Maximum maximum = file.GetMaximum( nNode );
	std::vector<NodeMenuEntry> entries = { MakeEntry( "Max frame %d (%f ms)", maximum ) };
	if ( nTick < 0 )
		return entries;
	int nLastFrame = maximum.m_nFrame;
	for ( int32_t nThreshold = maximum.m_nTime / 2; nThreshold != 0; nThreshold /= 2 )
	{
		const CKestoFile::Maximum next = file.FindNextFrame( nNode, nTick + 1, nThreshold );
		if ( next.m_nFrame < 0 || next.m_nFrame == nLastFrame )
			continue;
		entries.push_back( MakeEntry( "Next frame %d (%f ms)", next ) );
		nLastFrame = next.m_nFrame;
	}
	return entries;
}
