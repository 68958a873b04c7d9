#include "tools/convert/lineinput.h"

namespace convert
{
bool CLineInput::Next( std::string_view &line )
{
	m_Input.Skip( m_nLineSize );
	m_nLineSize = 0;
	while ( m_bDropRest && ( !m_Input.Window().empty() || m_Input.More() ) )
	{
		const size_t nEnd = m_Input.Window().find( '\n' );
		m_bDropRest = nEnd == std::string_view::npos;
		m_Input.Skip( m_bDropRest ? m_Input.Window().size() : nEnd + 1 );
	}
	size_t nEnd = m_Input.Window().find( '\n' );
	while ( nEnd == std::string_view::npos )
	{
		const size_t nSearched = m_Input.Window().size();
		if ( !m_Input.More() )
			break;
		nEnd = m_Input.Window().find( '\n', nSearched );
	}
	m_nOffset = m_Input.Position();
	line = m_Input.Window().substr( 0, nEnd );
	if ( m_Input.Window().empty() )
		return false;
	m_bTerminated = nEnd != std::string_view::npos;
	m_bDropRest = !m_bTerminated && line.size() == m_Input.WindowSize();
	m_nLineSize = line.size() + m_bTerminated;
	if ( line.ends_with( '\r' ) )
		line.remove_suffix( 1 );
	return true;
}
} // namespace convert
