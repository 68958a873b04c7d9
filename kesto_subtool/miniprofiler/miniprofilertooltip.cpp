#include "miniprofiler/miniprofilertooltip.h"

#include <QStringList>
#include <QTextDocument>
#include <algorithm>

#include "text/showntext.h"

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
			lines.last() = QChar( 0x2026 );
			break;
		}
		const int nFeed = description.indexOf( '\n', nStart );
		const int nEnd = nFeed < 0 ? description.size() : nFeed;
		const int nRead = std::min( nEnd - nStart, MAX_LINE_LENGTH + 1 );
		lines << ShownText( description.mid( nStart, nRead ), MAX_LINE_LENGTH );
		nStart = nEnd + 1;
	}
	const QString text = lines.join( '\n' );
	return Qt::mightBeRichText( text ) ? "<p style=\"white-space:pre\">" + text.toHtmlEscaped() + "</p>" : text;
}
