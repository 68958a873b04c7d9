// How long a run is, and what the process holds meanwhile.
#pragma once

#include <dirent.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#if defined( __SANITIZE_ADDRESS__ )
#define LONGRUN_ADDRESS_SANITIZER 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer )
#define LONGRUN_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef LONGRUN_ADDRESS_SANITIZER
#define LONGRUN_ADDRESS_SANITIZER 0
#endif

#if LONGRUN_ADDRESS_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

// SHOWBUDGET_LONG=1 in the environment: the full length instead of the one for every day.
inline bool IsLongRun()
{
	const char *pLong = std::getenv( "SHOWBUDGET_LONG" );
	return pLong && std::string_view( pLong ) == "1";
}

inline int LongOrShort( int nLong, int nShort )
{
	return IsLongRun() ? nLong : nShort;
}

// Bytes in blocks that were not freed.
inline size_t HeapInUse()
{
#if LONGRUN_ADDRESS_SANITIZER
	return __sanitizer_get_current_allocated_bytes();
#else
	const struct mallinfo2 info = mallinfo2();
	return info.uordblks + info.hblkhd;
#endif
}

inline int OpenDescriptors()
{
	int nCount = 0;
	if ( DIR *pFolder = opendir( "/proc/self/fd" ) )
	{
		while ( readdir( pFolder ) )
			nCount++;
		closedir( pFolder );
	}
	return nCount;
}

// The most that the heap held in each half of a run. Caches fill and empty, so two moments say little; what grows for
// good shows in the second half.
class CHeapHalves
{
public:
	void NoteFirst() { m_nFirst = std::max( m_nFirst, HeapInUse() ); }
	void NoteSecond() { m_nSecond = std::max( m_nSecond, HeapInUse() ); }
	size_t First() const { return m_nFirst; }
	size_t Second() const { return m_nSecond; }

private:
	size_t m_nFirst = 0;
	size_t m_nSecond = 0;
};
