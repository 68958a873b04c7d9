#include "recordings/textarena.h"

#include <cassert>

const char *CTextArena::Add( std::string_view text )
{
	if ( text.empty() )
		return "";
	const size_t nSize = text.size() + 1;
	assert( nSize <= BLOCK_SIZE );
	if ( nSize > m_nFree )
	{
		m_Blocks.push_back( std::make_unique_for_overwrite<char[]>( BLOCK_SIZE ) );
		m_nFree = BLOCK_SIZE;
	}
	char *pText = m_Blocks.back().get() + ( BLOCK_SIZE - m_nFree );
	m_nFree -= nSize;
	pText[text.copy( pText, text.size() )] = '\0';
	return pText;
}
