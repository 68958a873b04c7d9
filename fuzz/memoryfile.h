// Bytes as a file, for what reads files.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <span>
#include <string>

#include "fuzz/require.h"

namespace fuzz
{
// A file without a name, so that nothing touches a disk.
class CMemoryFile
{
public:
	explicit CMemoryFile( std::span<const uint8_t> bytes )
		: m_nFile( memfd_create( "recording", 0 ) )
		, m_Path( "/proc/self/fd/" + std::to_string( m_nFile ) )
	{
		const auto nWritten = bytes.empty() ? 0 : write( m_nFile, bytes.data(), bytes.size() );
		Require( nWritten == static_cast<ssize_t>( bytes.size() ), "the input could be written" );
	}
	~CMemoryFile() { close( m_nFile ); }
	CMemoryFile( const CMemoryFile & ) = delete;
	CMemoryFile &operator=( const CMemoryFile & ) = delete;

	const char *Path() const { return m_Path.c_str(); } // as long as the file lives

private:
	int m_nFile;
	std::string m_Path;
};
} // namespace fuzz
