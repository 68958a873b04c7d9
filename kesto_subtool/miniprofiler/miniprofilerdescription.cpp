#include "miniprofiler/miniprofilerdescription.h"

namespace
{
// Calls found( start, end ) for every line; one that returns true is the last.
template <typename Found>
void ForEachLine( std::string_view text, const Found &found )
{
	size_t nStart = 0;
	for ( size_t nEnd = text.find( '\n' ); nEnd != std::string_view::npos; nEnd = text.find( '\n', nStart ) )
	{
		if ( found( nStart, nEnd ) )
			return;
		nStart = nEnd + 1;
	}
}

char Normalised( char ch )
{
	if ( ch >= 'A' && ch <= 'Z' )
		return static_cast<char>( ch - 'A' + 'a' );
	return ch == '\\' ? '/' : ch;
}
} // namespace

CMiniProfilerDescription::CMiniProfilerDescription( std::string_view text )
	: m_nTextSize( static_cast<uint32_t>( text.size() ) )
{
	std::string_view file;
	ForEachLine( text,
		[&]( size_t nStart, size_t nEnd )
		{
			if ( m_nLines < KNOWN_LINES )
				m_Ends[m_nLines] = static_cast<uint32_t>( nEnd );
			if ( m_nLines++ == LINE_FILE )
				file = text.substr( nStart, nEnd - nStart );
			return false;
		} );
	m_Text.reserve( text.size() + file.size() );
	m_Text = text;
	for ( const char ch : file )
		m_Text += Normalised( ch );
}

std::string_view CMiniProfilerDescription::Line( size_t nIndex ) const
{
	if ( nIndex >= m_nLines )
		return {};
	if ( nIndex == LINE_FILE )
		return std::string_view( m_Text ).substr( m_nTextSize );
	const size_t nStart = nIndex == 0 ? 0 : m_Ends[nIndex - 1] + size_t{ 1 };
	return Text().substr( nStart, m_Ends[nIndex] - nStart );
}

bool CMiniProfilerDescription::HasLine( const std::function<bool( std::string_view )> &matches ) const
{
	bool bFound = false;
	size_t nLine = 0;
	ForEachLine( Text(),
		[&]( size_t nStart, size_t nEnd )
		{
			const bool bFile = nLine++ == LINE_FILE;
			bFound = matches( bFile ? Line( LINE_FILE ) : Text().substr( nStart, nEnd - nStart ) );
			return bFound;
		} );
	return bFound;
}
