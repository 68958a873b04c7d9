#include "views/budgetname.h"

#include "text/showntext.h"

QString BudgetNameText( const BudgetCategory &category )
{
	// Four bytes are the longest character, so the limit holds for the work, too.
	const std::string_view bytes = category.m_Name.View().substr( 0, 4 * ( BUDGET_NAME_LIMIT + 1 ) );
	return ShownText( QString::fromUtf8( bytes.data(), static_cast<int>( bytes.size() ) ), BUDGET_NAME_LIMIT );
}
