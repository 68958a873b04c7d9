#include "lineallowance.h"

#include <string>
#include <utility>

#include "log.h"

namespace showbudget
{
CLineAllowance::CLineAllowance( const char *pRest )
	: m_pRest( pRest )
{
}

bool CLineAllowance::Take()
{
	const auto now = std::chrono::steady_clock::now();
	if ( now - m_Since >= TIME )
	{
		TellRest();
		m_Since = now;
	}
	return m_nTaken++ < LINES;
}

void CLineAllowance::TellRest()
{
	if ( const uint64_t nTaken = std::exchange( m_nTaken, 0 ); nTaken > LINES )
		LogLine( Severity::Message, std::to_string( nTaken - LINES ) + ' ' + m_pRest );
}
} // namespace showbudget
