#include "views/budgetname.h"

#include <algorithm>

namespace
{
constexpr QChar ELLIPSIS( 0x2026 );

// Directional marks, embeddings, overrides and isolates.
bool TurnsDirection( QChar c )
{
	const ushort n = c.unicode();
	return n == 0x061C || n == 0x200E || n == 0x200F || ( n >= 0x202A && n <= 0x202E ) ||
		   ( n >= 0x2066 && n <= 0x2069 );
}

bool IsShowable( QChar c )
{
	const QChar::Category category = c.category();
	return category != QChar::Other_Control && category != QChar::Separator_Line &&
		   category != QChar::Separator_Paragraph && !TurnsDirection( c );
}
} // namespace

QString BudgetNameText( const BudgetCategory &category )
{
	// Four bytes are the longest character, so the limit holds for the work, too.
	const std::string_view bytes = category.m_Name.View().substr( 0, 4 * ( BUDGET_NAME_LIMIT + 1 ) );
	QString text = QString::fromUtf8( bytes.data(), static_cast<int>( bytes.size() ) );
	if ( text.size() > BUDGET_NAME_LIMIT )
	{
		text.truncate( BUDGET_NAME_LIMIT - 1 );
		if ( text.at( text.size() - 1 ).isHighSurrogate() )
			text.chop( 1 ); // half a character
		text += ELLIPSIS;
	}
	std::ranges::replace_if(
		text, []( QChar c ) { return !IsShowable( c ); }, QChar( QChar::ReplacementCharacter ) );
	return text;
}
