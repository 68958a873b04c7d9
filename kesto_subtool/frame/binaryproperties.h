// What the module says of its own build.
#pragma once

#include <cstdint>

class CStaticInitState;

enum class BinaryPropertyKind : uint32_t
{
	String = 0,
	Integer = 1
};

struct BinaryProperty
{
	union
	{
		const char *m_pString; // lives as long as the module
		intptr_t m_nInteger;
	};
	BinaryPropertyKind m_Kind;
};

// Touches the state word, then answers: 1 with *pResult filled, or 0 with *pResult as it was for a key that does not
// exist.
int GetBinaryProperty( CStaticInitState &state, const void *pGuardedData, int nKey, BinaryProperty *pResult );
