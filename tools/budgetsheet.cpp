#include "tools/budgetsheet.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "wire/budgetchunks.h"

bool CBudgetSheet::AddCategories( std::span<const uint8_t> payload )
{
	const wire::CCategoriesView view( payload );
	if ( view.Problem() != wire::CountProblem::None )
	{
		m_nMalformed++;
		return true;
	}
	std::vector<std::string> names;
	for ( uint32_t i = 0; i < view.Count(); i++ )
		names.emplace_back( view[i].m_Name );
	m_nBudgets = view.Count();
	if ( !m_bHeadings )
		m_Names = names;
	MapColumns( names );
	return m_bHeadings || WriteHeadings();
}

bool CBudgetSheet::WriteHeadings()
{
	m_bHeadings = true;
	for ( const char *pHeading : { "frame", "seconds", "frame_rate", "begins_tick" } )
		m_Csv.Text( pHeading );
	for ( const std::string &name : m_Names )
		m_Csv.Text( name + "_us" );
	m_Csv.Text( "total_us" );
	return m_Csv.EndRow();
}

// Each budget goes to the first free column of its name, so that several of one name keep their order.
void CBudgetSheet::MapColumns( const std::vector<std::string> &names )
{
	std::unordered_map<std::string_view, std::vector<size_t>> freeColumns; // the first one last
	for ( size_t i = m_Names.size(); i-- > 0; )
		freeColumns[m_Names[i]].push_back( i );
	m_Places.assign( m_Names.size(), -1 );
	for ( size_t i = 0; i < names.size(); i++ )
	{
		const auto found = freeColumns.find( names[i] );
		if ( found == freeColumns.end() || found->second.empty() )
		{
			NoteLeftOut( names[i] );
			continue;
		}
		m_Places[found->second.back()] = static_cast<int>( i );
		found->second.pop_back();
	}
}

void CBudgetSheet::NoteLeftOut( const std::string &name )
{
	if ( std::find( m_LeftOut.begin(), m_LeftOut.end(), name ) != m_LeftOut.end() )
		return;
	if ( m_LeftOut.size() < MAX_LEFT_OUT )
		m_LeftOut.push_back( name );
	else
		m_bMoreLeftOut = true;
}

bool CBudgetSheet::AddSample( std::span<const uint8_t> payload, double flSeconds )
{
	const wire::CSampleView view( payload );
	if ( !m_bHeadings || view.Problem() != wire::CountProblem::None || view.Count() < m_nBudgets )
	{
		m_nMalformed++;
		return true;
	}
	if ( m_nFrames == 0 )
		m_flFirst = flSeconds;
	m_Csv.Integer( m_nFrames++ );
	m_Csv.Number( flSeconds - m_flFirst, 6 );
	m_Csv.Number( std::isfinite( view.FrameRate() ) ? view.FrameRate() : 0.0, 3 );
	m_Csv.Integer( view.IsContinuation() ? 0 : 1 );
	for ( const int nPlace : m_Places )
	{
		if ( nPlace < 0 )
			m_Csv.Empty();
		else
			m_Csv.Integer( view.Value( static_cast<uint32_t>( nPlace ) ) );
	}
	uint64_t nTotal = 0; // of all budgets, those without a column too
	for ( uint32_t i = 0; i < m_nBudgets; i++ )
		nTotal += view.Value( i );
	m_Csv.Integer( nTotal );
	return m_Csv.EndRow();
}
