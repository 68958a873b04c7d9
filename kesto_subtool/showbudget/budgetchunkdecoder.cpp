#include "showbudget/budgetchunkdecoder.h"

#include "keel0/logging.h"
#include "wire/budgetchunks.h"

namespace
{
const char *DescribeProblem( wire::CountProblem problem )
{
	switch ( problem )
	{
		case wire::CountProblem::NoCount:
			return "the chunk is too short to hold a count";
		case wire::CountProblem::DoesNotFit:
			return "the chunk is too short for the count";
		case wire::CountProblem::TooMany:
			return "the count is over the limit";
		case wire::CountProblem::None:
			break;
	}
	return "";
}

void WarnMalformed( const char *pChunk, uint32_t nCount, size_t nLength, const char *pProblem )
{
	Warning( "Malformed %s chunk, count %u, length %zu: %s\n", pChunk, nCount, nLength, pProblem );
}
} // namespace

bool DecodeCategories( std::span<const uint8_t> payload, std::vector<BudgetCategory> &categories )
{
	const wire::CCategoriesView view( payload );
	if ( view.Problem() != wire::CountProblem::None )
	{
		WarnMalformed( "PCAT", view.Count(), payload.size(), DescribeProblem( view.Problem() ) );
		return false;
	}
	categories.clear();
	categories.reserve( view.Count() + 1 ); // the store adds "Totals"
	for ( uint32_t i = 0; i < view.Count(); i++ )
	{
		const wire::Category category = view[i];
		categories.push_back(
			{ CUtlString( category.m_Name ), QColor( category.m_nRed, category.m_nGreen, category.m_nBlue, 255 ) } );
	}
	return true;
}

bool DecodeSample( std::span<const uint8_t> payload, size_t nCategories, BudgetSample &sample )
{
	const wire::CSampleView view( payload );
	if ( view.Problem() != wire::CountProblem::None )
	{
		WarnMalformed( "PCPU", view.Count(), payload.size(), DescribeProblem( view.Problem() ) );
		return false;
	}
	const size_t nWanted = nCategories > 0 ? nCategories - 1 : 0;
	if ( view.Count() < nWanted )
	{
		WarnMalformed( "PCPU", view.Count(), payload.size(), "fewer values than categories" );
		return false;
	}
	sample.m_Values.resize( nWanted );
	view.CopyValues( sample.m_Values );
	sample.m_flFrameRate = view.FrameRate();
	sample.m_bContinuation = view.IsContinuation();
	return true;
}
