// How much memory a decoder may take for what it is given.
#pragma once

#include <cstddef>

// Watches all memory that is allocated while it lives, above what was there before: at most 16 MiB for an input of up
// to 100 bytes, at most 64 MiB and 16 bytes for each byte of a longer one. The end of its life is where too much counts
// as a fault. One at a time. Only the sanitizers' allocator can be watched: in other builds nothing is counted.
class CMemoryLimit
{
public:
	explicit CMemoryLimit( size_t nInputBytes );
	~CMemoryLimit();
	CMemoryLimit( const CMemoryLimit & ) = delete;
	CMemoryLimit &operator=( const CMemoryLimit & ) = delete;

private:
	size_t m_nInputBytes;
};
