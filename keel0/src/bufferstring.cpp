#include "keel0/bufferstring.h"

#include <cstdio>

size_t CBufferString::Format( const char *pFormat, ... )
{
	// The arguments may point into the old text, so it lives until the new one is complete.
	CBufferString formatted;
	va_list arguments;
	va_start( arguments, pFormat );
	formatted.AppendFormatV( pFormat, arguments );
	va_end( arguments );
	m_Text = std::move( formatted.m_Text );
	return m_Text.size();
}

size_t CBufferString::AppendFormat( const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	const size_t nLength = AppendFormatV( pFormat, arguments );
	va_end( arguments );
	return nLength;
}

size_t CBufferString::AppendFormatV( const char *pFormat, va_list arguments )
{
	va_list measuring;
	va_copy( measuring, arguments );
	const int nAdded = std::vsnprintf( nullptr, 0, pFormat, measuring );
	va_end( measuring );
	if ( nAdded <= 0 )
		return m_Text.size();

	const size_t nBefore = m_Text.size();
	m_Text.resize( nBefore + static_cast<size_t>( nAdded ) );
	// The terminator falls on the one that the string keeps behind its last character.
	std::vsnprintf( m_Text.data() + nBefore, static_cast<size_t>( nAdded ) + 1, pFormat, arguments );
	return m_Text.size();
}

void CBufferString::Append( const char *pText )
{
	if ( pText )
		m_Text += pText;
}
