// Writes recordings (.kesto).
#pragma once

#include <vector>

#include "tools/convert/framesink.h"
#include "wire/recordingwriter.h"

namespace convert
{
// What a recording holds of a node beside its name, for recordings that are made of recordings.
struct NodeRecord
{
	int32_t m_nId = 0;
	uint32_t m_nValue = 0;
	int32_t m_nRootParent = CCallTree::NONE; // of the root only, when its definition names one; it is not in the tree
};

// Times are rounded as the recorder of the target library does it: on one axis, on which the frames follow each other
// and, from a node's begin, its children do, each begin and end goes to the nearest unit of the file, and a time is
// what lies between. So children that fit into their parent do so afterwards, the frames add up to the whole, and what
// is whole units already stays as it is.
//
// Children of a node are chained in the order in which they lie in the tree, as far as the format allows: those that
// come later than others' frame are in front of them.
class CRecordingSink : public IFrameSink
{
public:
	// Gives the id and the value of a node of the tree; without it ids are those of the tree.
	using NodeRecords = std::function<NodeRecord( const CCallTree::Node &node )>;

	CRecordingSink( INodeTexts &texts, CReport &report, ByteOutput output, NodeRecords records = {} );

	void AddString( std::string_view latin1, uint32_t nValue ); // goes into the next frame
	bool AddFrame( const CCallTree &tree, std::span<const NodeTimes> times ) override;
	bool AddFrameWithoutTimes( const CCallTree &tree ) override;
	bool Finish() override;

	static constexpr int64_t MAX_MICROSECONDS = INT32_MAX; // readers compare times as signed numbers

private:
	struct Link // as the recording's reader chains nodes
	{
		int32_t m_nFirstChild = CCallTree::NONE;
		int32_t m_nNextSibling = CCallTree::NONE;
	};
	struct TableString
	{
		std::string m_Text;
		uint32_t m_nValue;
	};

	Link &LinkOf( int32_t nNode ) { return m_Links[static_cast<size_t>( nNode )]; }
	NodeRecord RecordOf( const CCallTree &tree, int32_t nNode ) const;
	void WriteHeader( const CCallTree &tree );
	void BeginFrame( const CCallTree &tree );
	bool EndFrame();
	void DefineNodes( const CCallTree &tree );
	void DefineNode( const CCallTree &tree, int32_t nNode );
	void CollectOrder( const CCallTree &tree );
	void FlushWhenLong();
	void WriteEntry( const NodeTimes &times, int64_t nRounded );

	INodeTexts &m_Texts;
	CReport &m_Report;
	ByteOutput m_Output;
	NodeRecords m_Records;
	wire::CRecordingWriter m_Writer;
	std::vector<TableString> m_Strings;
	std::vector<Link> m_Links;
	std::vector<int32_t> m_Order; // of the entries of a frame
	// Moments, as nanoseconds since a whole unit: where the next frame begins, and for each node where its next child
	// does.
	int64_t m_nFrameBegin = 0;
	std::vector<int64_t> m_Ends;
	bool m_bHeader = false;
	bool m_bGood = true;
};
} // namespace convert
