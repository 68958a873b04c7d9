#include "views/budgetviewstyle.h"

#include <QFontMetrics>

BudgetViewColours BudgetViewColours::ForStyle( bool bDark )
{
	if ( bDark )
		return { Qt::lightGray, Qt::lightGray, Qt::lightGray, QColor( 255, 255, 0 ), QColor( 255, 255, 255 ) };
	return { Qt::black, Qt::black, Qt::black, Qt::black, Qt::blue };
}

BudgetViewStyle BudgetViewStyle::Make( bool bDark, float flUIScale )
{
	BudgetViewStyle style;
	// Not literals: the toolkit's font cache keeps the names, also when the module has left the process.
	style.m_RowFont = QFont( QString::fromLatin1( "Verdana" ), 9, QFont::Normal );
	style.m_CaptionFont = QFont( QString::fromLatin1( "Courier New" ), 10, QFont::Normal );
	style.m_nRowHeight = QFontMetrics( style.m_RowFont ).height() + 2;
	style.m_nCaptionHeight = QFontMetrics( style.m_CaptionFont ).height() + 2;
	style.m_flUIScale = flUIScale;
	style.m_Colours = BudgetViewColours::ForStyle( bDark );
	return style;
}
