#include "tools/progress.h"

#include <algorithm>
#include <ostream>

#include "keel0/platform.h"
#include "tools/text.h"
#include "wire/plaintext.h"

namespace
{
constexpr double FIRST_DELAY = 0.5; // seconds
constexpr double INTERVAL = 0.1;
constexpr size_t LONGEST_LABEL = 72; // characters; a line that wraps could not be written over

std::string ShownLabel( std::string_view label )
{
	return ShortenMiddle( wire::ToPlainLine( label ), LONGEST_LABEL );
}
} // namespace

CProgress::CProgress( std::ostream *pTerminal, std::string_view label, int64_t nTotal )
	: m_pTerminal( pTerminal )
	, m_Label( ShownLabel( label ) )
	, m_nTotal( nTotal )
	, m_flNextTime( pTerminal ? Plat_FloatTime() + FIRST_DELAY : 0.0 )
{
}

CProgress::~CProgress()
{
	if ( m_nShown > 0 )
		*m_pTerminal << '\r' << std::string( m_nShown, ' ' ) << '\r' << std::flush;
}

void CProgress::Show( int64_t nDone )
{
	if ( !m_pTerminal )
		return;
	const double flNow = Plat_FloatTime();
	if ( flNow < m_flNextTime )
		return;
	m_flNextTime = flNow + INTERVAL;
	std::string text = m_Label;
	if ( m_nTotal > 0 )
	{
		const double flPart = static_cast<double>( nDone ) / static_cast<double>( m_nTotal );
		text += ' ' + std::to_string( static_cast<int>( std::clamp( flPart, 0.0, 1.0 ) * 100.0 ) ) + '%';
	}
	Write( text );
}

void CProgress::Write( const std::string &text )
{
	const size_t nWidth = CountCharacters( text );
	const size_t nBlanks = m_nShown > nWidth ? m_nShown - nWidth : 0;
	*m_pTerminal << '\r' << text << std::string( nBlanks, ' ' ) << std::flush;
	m_nShown = nWidth + nBlanks;
}
