// A growable text buffer that is filled by printf formats.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

#include "keel0/api.h"

class KEEL0_API CBufferString
{
public:
	const char *Get() const { return m_Text.c_str(); } // never null; valid until the text changes
	size_t Length() const { return m_Text.size(); }    // bytes
	bool IsEmpty() const { return m_Text.empty(); }
	void Clear() { m_Text.clear(); }

	// Replaces the text; returns its new length in bytes. A format that cannot be printed leaves the text empty.
	size_t Format( const char *pFormat, ... ) KEEL0_PRINTF( 2, 3 );

	// Adds to the text; returns its new length in bytes. The arguments must not point into this buffer.
	size_t AppendFormat( const char *pFormat, ... ) KEEL0_PRINTF( 2, 3 );
	size_t AppendFormatV( const char *pFormat, va_list arguments ) KEEL0_PRINTF( 2, 0 );
	void Append( const char *pText );

private:
	std::string m_Text;
};
