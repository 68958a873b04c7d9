#include "miniprofiler/miniprofilershowntext.h"

#include <QStringList>
#include <QTextDocument>
#include <algorithm>

namespace
{
constexpr QChar ELLIPSIS( 0x2026 );

// Marks, embeddings, overrides and isolates of direction, and the two separators that break a line.
bool IsLayoutControl( ushort nUnit )
{
	return ( nUnit >= 0x202A && nUnit <= 0x202E ) || ( nUnit >= 0x2066 && nUnit <= 0x2069 ) || nUnit == 0x200E ||
		   nUnit == 0x200F || nUnit == 0x061C || nUnit == 0x2028 || nUnit == 0x2029;
}

bool IsShownAsItIs( QChar character )
{
	const ushort nUnit = character.unicode();
	return nUnit >= 0x20 && ( nUnit < 0x7F || nUnit >= 0xA0 ) && !IsLayoutControl( nUnit );
}

QString CutWithEllipsis( const QString &text, int nMaxLength )
{
	if ( text.size() <= nMaxLength )
		return text;
	int nKept = nMaxLength - 1;
	if ( nKept > 0 && text[nKept - 1].isHighSurrogate() )
		nKept--;
	return text.left( nKept ) + ELLIPSIS;
}
} // namespace

QString MiniProfilerShownText( const QString &text, int nMaxLength )
{
	// One more than fits, so that what is left out is noticed.
	const auto end = text.begin() + std::min<qint64>( text.size(), qint64{ nMaxLength } + 1 );
	if ( std::all_of( text.begin(), end, IsShownAsItIs ) )
		return CutWithEllipsis( text, nMaxLength );

	QString line;
	for ( auto i = text.begin(); i != end; ++i )
	{
		if ( *i == '\t' )
			line += QLatin1String( "    " );
		else
			line += IsShownAsItIs( *i ) ? *i : QChar( QChar::ReplacementCharacter );
	}
	return CutWithEllipsis( line, nMaxLength );
}

QString MiniProfilerToolTip( const QString &description )
{
	constexpr int MAX_LINES = 40;
	constexpr int MAX_LINE_LENGTH = 200;
	QStringList lines;
	int nStart = 0;
	while ( nStart <= description.size() )
	{
		if ( lines.size() == MAX_LINES )
		{
			lines.last() = ELLIPSIS;
			break;
		}
		const int nFeed = description.indexOf( '\n', nStart );
		const int nEnd = nFeed < 0 ? description.size() : nFeed;
		const int nRead = std::min( nEnd - nStart, MAX_LINE_LENGTH + 1 );
		lines << MiniProfilerShownText( description.mid( nStart, nRead ), MAX_LINE_LENGTH );
		nStart = nEnd + 1;
	}
	const QString text = lines.join( '\n' );
	return Qt::mightBeRichText( text ) ? "<p style=\"white-space:pre\">" + text.toHtmlEscaped() + "</p>" : text;
}
