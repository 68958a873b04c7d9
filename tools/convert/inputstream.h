// An input file, read piece by piece.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace convert
{
class CInputStream
{
public:
	static constexpr size_t WINDOW_SIZE = 1 << 18; // bytes, unless told otherwise

	// Told the position now and then.
	using Progress = std::function<void( int64_t nPosition )>;

	explicit CInputStream( size_t nWindowSize = WINDOW_SIZE );
	~CInputStream();
	CInputStream( const CInputStream & ) = delete;
	CInputStream &operator=( const CInputStream & ) = delete;

	bool Open( const std::string &path );      // a file or a pipe; false: Problem() says why
	void OpenMemory( std::string_view bytes ); // the same of a copy of the bytes
	void SetProgress( Progress progress ) { m_Progress = std::move( progress ); }

	int64_t Size() const { return m_nSize; } // -1 when it is not known
	bool Rewind();                           // to the start; false where the input is no file

	// The bytes ahead, with a 0 behind them; empty at the end. Skip takes bytes of the window; More makes it longer by
	// what the input has, up to WindowSize(), and is false when there is nothing more or the window is full.
	std::string_view Window() const { return { m_pNext, static_cast<size_t>( m_pEnd - m_pNext ) }; }
	void Skip( size_t nBytes ) { m_pNext += nBytes; }
	bool More();
	size_t WindowSize() const { return m_nWindowSize; } // bytes

	// What lies behind this position is not read before the limit is raised: the input seems to end somewhat behind it.
	void SetLimit( int64_t nPosition ) { m_nLimit = nPosition; }
	bool IsAtLimit() const { return !m_bEnded && m_nWindowEnd > m_nLimit; }

	int64_t Position() const { return m_nWindowEnd - ( m_pEnd - m_pNext ); } // of the window's first byte
	const std::string &Problem() const { return m_Problem; }

private:
	bool ReadMore();

	const size_t m_nWindowSize;
	const char *m_pNext = nullptr; // of the window, or of the whole memory
	const char *m_pEnd = nullptr;
	int64_t m_nWindowEnd = 0; // position of m_pEnd
	int64_t m_nLimit = INT64_MAX;
	int64_t m_nSize = -1;
	int m_nFile = -1;
	bool m_bEnded = false;
	std::vector<char> m_Buffer; // and one byte for the 0
	Progress m_Progress;
	std::string m_Problem;
};
} // namespace convert
