#include "displaytext.h"

namespace
{
// Directional marks, embeddings, overrides and isolates, and the two separators that break a line.
bool IsInvisibleControl( ushort nUnit )
{
	return ( nUnit >= 0x202A && nUnit <= 0x202E ) || ( nUnit >= 0x2066 && nUnit <= 0x2069 ) || nUnit == 0x200E ||
		   nUnit == 0x200F || nUnit == 0x061C || nUnit == 0x2028 || nUnit == 0x2029;
}
} // namespace

QString CutWithEllipsis( const QString &text, int nMaxLength )
{
	if ( text.size() <= nMaxLength )
		return text;
	int nKept = nMaxLength - 1;
	// Half of a character outside the basic plane is no character.
	if ( nKept > 0 && text.at( nKept - 1 ).isHighSurrogate() )
		nKept--;
	return text.left( nKept ) + QChar( 0x2026 );
}

QString ToDisplayLine( const QString &text, int nMaxLength )
{
	QString line;
	line.reserve( qMin( text.size(), nMaxLength ) );
	for ( const QChar character : text )
	{
		const ushort nUnit = character.unicode();
		if ( nUnit == '\t' )
			line += QLatin1String( "    " );
		else if ( nUnit < 0x20 || ( nUnit >= 0x7F && nUnit < 0xA0 ) || IsInvisibleControl( nUnit ) )
			line += QChar( QChar::ReplacementCharacter );
		else
			line += character;
		if ( line.size() > nMaxLength )
			return CutWithEllipsis( line, nMaxLength );
	}
	return line;
}

QString ToToolTip( const QString &text )
{
	return QStringLiteral( "<span style=\"white-space:pre-wrap\">%1</span>" ).arg( text.toHtmlEscaped() );
}

QStringList SplitLines( const QString &text )
{
	QString unified = text;
	unified.replace( QLatin1String( "\r\n" ), QLatin1String( "\n" ) ).replace( '\r', '\n' );
	if ( unified.endsWith( '\n' ) )
		unified.chop( 1 );
	return unified.split( '\n' );
}
