// Lines of an input stream.
#pragma once

#include <string_view>

#include "tools/convert/inputstream.h"

namespace convert
{
class CLineInput
{
public:
	explicit CLineInput( CInputStream &input )
		: m_Input( input )
	{
	}

	// The next line, without its end ("\n" or "\r\n"), valid until the next call; false at the end of the input. Of a
	// line that is longer than the stream's window the rest is dropped.
	bool Next( std::string_view &line );

	int64_t Offset() const { return m_nOffset; }        // of the line's first byte
	bool IsTerminated() const { return m_bTerminated; } // the line has an end, which only the last one may lack

private:
	CInputStream &m_Input;
	size_t m_nLineSize = 0; // bytes of the window that the line took
	bool m_bDropRest = false;
	int64_t m_nOffset = 0;
	bool m_bTerminated = false;
};
} // namespace convert
