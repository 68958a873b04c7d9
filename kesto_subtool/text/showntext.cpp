#include "text/showntext.h"

#include <algorithm>

namespace
{
constexpr QChar ELLIPSIS( 0x2026 );

bool JoinsCharacters( QChar c )
{
	return c == QChar( 0x200C ) || c == QChar( 0x200D );
}

bool IsShownAsItIs( QChar c )
{
	if ( c.unicode() >= 0x20 && c.unicode() < 0x7F )
		return true; // nearly all of them
	switch ( c.category() )
	{
		case QChar::Other_Control:
		case QChar::Separator_Line:
		case QChar::Separator_Paragraph:
			return false;
		case QChar::Other_Format:
			return JoinsCharacters( c );
		default:
			return true;
	}
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

QString ShownText( const QString &text, int nMaxLength )
{
	// One more than fits, so that what is left out is noticed.
	const auto end = text.begin() + std::min<qint64>( text.size(), qint64{ nMaxLength } + 1 );
	if ( std::all_of( text.begin(), end, IsShownAsItIs ) )
		return CutWithEllipsis( text, nMaxLength ); // so that most texts are never copied

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
