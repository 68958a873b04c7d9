// Turns recorded frames into the bytes of a recording.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "framechunks.h"
#include "recordtree.h"

namespace showbudget
{
// A frame as the recorder's thread keeps it. The entry of the frame itself is the first.
struct RecordedFrame
{
	uint64_t m_nBegin = 0; // ticks
	uint32_t m_nFrame = 0; // counts all frames of the session
	std::vector<RecordEntry> m_Entries;
};

// What a recording says of a node.
struct RecordedNode
{
	uint32_t m_nParent;      // lower than the node's own index
	std::string_view m_Name; // UTF-8
	uint32_t m_nValue;       // 0x00RRGGBB, the colour of its budget
};

// Times are rounded down on one axis, on which scopes lie side by side inside their caller, and differences are taken
// of rounded times. So children never add up to more than their parent, frames add up to the time that passed, and what
// is shorter than the unit of the file is not lost in all frames but counted in some.
class CRecordingEncoder
{
public:
	CRecordingEncoder( uint64_t nTickFrequency, std::function<RecordedNode( uint32_t nNode )> nodes );

	static void AppendFileHeader( Bytes &out );
	// A text for whoever opens the file by hand; it goes into the next frame.
	void AddString( std::string_view text, uint32_t nValue );
	// Appends one whole frame, with the definitions of nodes that are new in it. Calls over 65,535 and times over 35
	// minutes (wire::RECORDING_MAX_TIME) are written as that.
	void AppendFrame( Bytes &out, const RecordedFrame &frame );

private:
	struct FileNode
	{
		int32_t m_nFirstChild = -1;
		int32_t m_nNextSibling = -1;
		uint64_t m_nTicks = 0; // of the frame
		uint32_t m_nCalls = 0;
	};
	struct Place
	{
		int32_t m_nNode; // an index or an id
		uint32_t m_nDepth;
	};

	void DefineNodes( Bytes &out, const RecordedFrame &frame );
	void CollectFresh( uint32_t nNode, std::vector<Place> &fresh );
	void Define( Bytes &out, uint32_t nNode );
	void OrderNodes();
	void AppendTimings( Bytes &out, const RecordedFrame &frame );
	uint64_t UnitsAt( uint64_t nTicks ) const;

	std::function<RecordedNode( uint32_t )> m_NodeOf;
	double m_flUnitsPerTick;
	uint64_t m_nOrigin = 0; // the first frame's beginning
	bool m_bOrigin = false;
	std::vector<int32_t> m_Ids; // by node
	std::vector<FileNode> m_Nodes;
	std::vector<Place> m_Order; // of the entries; empty when nodes came since
	std::vector<uint64_t> m_Begins;
	Bytes m_Strings;
};
} // namespace showbudget
