// Keeps the leak checker's eyes off memory that is not lost but that it cannot find.
#pragma once

#include <sanitizer/lsan_interface.h>

// Null where the program is built without the leak checker.
#pragma weak __lsan_disable
#pragma weak __lsan_enable

// What this thread allocates while one lives is never reported.
class CUnwatchedMemory
{
public:
	CUnwatchedMemory()
	{
		if ( __lsan_disable )
			__lsan_disable();
	}
	~CUnwatchedMemory()
	{
		if ( __lsan_enable )
			__lsan_enable();
	}
	CUnwatchedMemory( const CUnwatchedMemory & ) = delete;
	CUnwatchedMemory &operator=( const CUnwatchedMemory & ) = delete;
};
