// What every target format is written through.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "tools/convert/calltree.h"
#include "tools/convert/report.h"

namespace convert
{
// Takes the frames of one tree, that only ever grows and that is there until Finish.
class IFrameSink
{
public:
	virtual ~IFrameSink() = default;

	// Times by node id, one per node of the tree; the root's time is the frame's. False, here and below: the output
	// could not be written.
	virtual bool AddFrame( const CCallTree &tree, std::span<const NodeTimes> times ) = 0;

	// A frame without times, not even its own. Costs nothing for each node, as its input did not.
	virtual bool AddFrameWithoutTimes( const CCallTree &tree ) = 0;

	virtual bool Finish() = 0;
};

// What stands behind the nodes of a tree.
class INodeTexts
{
public:
	virtual ~INodeTexts() = default;
	virtual std::string_view Name( const CCallTree::Node &node ) = 0; // UTF-8, valid until the next call
};

// Takes bytes of the output file; false when they could not be written.
using ByteOutput = std::function<bool( std::string_view )>;

// Text on its way to a ByteOutput, in large pieces.
class COutputBuffer
{
public:
	explicit COutputBuffer( ByteOutput output )
		: m_Output( std::move( output ) )
	{
	}

	// Passes on what there is when it is a lot. False from the first piece on that could not be written.
	bool FlushWhenLong() { return m_Text.size() < FLUSH_SIZE ? m_bGood : Flush(); }
	bool Flush()
	{
		m_bGood = m_bGood && m_Output( m_Text );
		m_Text.clear();
		return m_bGood;
	}

	std::string m_Text;

private:
	static constexpr size_t FLUSH_SIZE = 1 << 16;
	ByteOutput m_Output;
	bool m_bGood = true;
};
} // namespace convert
