// Turns the bytes of a recording into a CKestoFile.
#pragma once

#include <cstdint>
#include <string_view>

#include "recordings/fieldsource.h"
#include "recordings/kestofile.h"
#include "recordings/siblingforest.h"
#include "recordings/timingsparser.h"

// Lives as long as one parse. Whatever the bytes say, memory stays below 64 MiB + 16 bytes per byte read, nothing
// recurses, and the time grows with the number of bytes (times a logarithm at worst).
class CKestoFileParser
{
public:
	CKestoFileParser( CKestoFile &file, CKestoFile::CReader &reader );

	void Parse();

private:
	bool ParseHeader();
	bool ParseFrame();
	bool ParseRecord( int8_t nToken );
	bool ParseNode();
	bool ParseTableString();
	bool ParseText( std::string_view &text );
	bool Fail( const char *pFormat, int nValue );

	void DefineNode( int32_t nParent, std::string_view name, uint32_t nValue, int32_t nNode );
	bool IsLinkedBelow( int32_t nParent, int32_t nNode );
	void LinkNode( int32_t nParent, int32_t nNode );
	void MakeSiblingForest();
	void AddToSiblingForest( int32_t nNode );
	int32_t VertexOf( int32_t nNode ) const { return nNode < 0 ? -1 : m_Vertices[nNode] - 1; }

	void AppendFrame();
	void AddStatistics( const CKestoFile::CTickTimings::Storage &frame );

	CKestoFile &m_File;
	CFieldSource m_Source;
	CTimingsParser m_Timings;
	char m_Text[wire::RECORDING_MAX_TEXT];

	// From the first time on that a linked node was linked again. Until then a node is in its parent's chain and in no
	// other.
	bool m_bRelinked = false;
	CSiblingForest m_Siblings;
	CPagedList<int32_t> m_Vertices; // of the nodes in m_Siblings, plus 1
};
