#include "views/sampledescription.h"

#include <QCoreApplication>
#include <algorithm>

#include "views/budgetname.h"
#include "views/framerate.h"
#include "views/samplestepping.h"

static constexpr size_t LARGEST_BUDGETS = 5;

static std::vector<SampleDescription::Budget> LargestBudgets( const BudgetViewData &data, uint32_t nSlot )
{
	std::vector<size_t> order;
	for ( size_t i = 0; i + 1 < data.m_Categories.size(); i++ )
	{
		if ( data.Value( i, nSlot ) > 0 )
			order.push_back( i );
	}
	// Budgets of the same time keep the order of the names column.
	std::stable_sort( order.begin(), order.end(),
		[&]( size_t a, size_t b ) { return data.Value( a, nSlot ) > data.Value( b, nSlot ); } );
	order.resize( std::min( order.size(), LARGEST_BUDGETS ) );

	std::vector<SampleDescription::Budget> budgets;
	for ( size_t i : order )
	{
		const BudgetCategory &category = data.m_Categories[i];
		budgets.push_back( { BudgetNameText( category ), category.m_Colour, data.Value( i, nSlot ) } );
	}
	return budgets;
}

SampleDescription SampleDescription::Of( const BudgetViewData &data, uint32_t nSample )
{
	SampleDescription description;
	description.m_nFrame = uint64_t{ nSample } + 1;
	const std::optional<HeldSamples> held = HeldSamples::Of( data.m_nSampleCount );
	description.m_bHeld = held && nSample >= held->m_nOldest && nSample <= held->m_nNewest;
	if ( !description.m_bHeld )
		return description;
	description.m_nMicroseconds = SampleFrameTime( data, nSample );
	description.m_flFrameRate = SampleFrameRate( data, nSample );
	description.m_Largest = LargestBudgets( data, BudgetSlot( nSample ) );
	return description;
}

static QString MillisecondsText( uint32_t nMicroseconds )
{
	return QString::asprintf( "%.2f ms", nMicroseconds * 0.001 );
}

QString SampleDescription::ToHtml() const
{
	const auto Translate = []( const char *pText )
	{ return QCoreApplication::translate( "SampleDescription", pText ); };
	const QString title = QStringLiteral( "<b>%1</b>" ).arg( Translate( "Frame %1" ).arg( m_nFrame ) );
	if ( !m_bHeld )
		return title + QStringLiteral( "<br>" ) + Translate( "no longer kept; a later frame took its place" );

	QString html = title;
	html += QStringLiteral( "<br>%1, %2" )
				.arg( MillisecondsText( m_nMicroseconds ), QString::asprintf( "%.2f fps", double{ m_flFrameRate } ) );
	if ( m_Largest.empty() )
		return html;
	html += QStringLiteral( "<table cellspacing='0' cellpadding='1'>" );
	for ( const Budget &budget : m_Largest )
	{
		html +=
			QStringLiteral( "<tr><td style='background-color:%1'>&nbsp;&nbsp;</td><td style='white-space:pre'> %2 </td>"
							"<td align='right'>%3</td></tr>" )
				.arg(
					budget.m_Colour.name(), budget.m_Name.toHtmlEscaped(), MillisecondsText( budget.m_nMicroseconds ) );
	}
	return html + QStringLiteral( "</table>" );
}
