// Writes formats that are lines of text: folded stacks and CSV.
#pragma once

#include <string>
#include <vector>

#include "tools/convert/framesink.h"

namespace convert
{
// Writes "a;b;c NUMBER" for each node, the microseconds that it took itself, all frames added up. What is left of the
// frames themselves is the stack "[frame]". Semicolons in names become colons, line breaks spaces.
class CFoldedSink : public IFrameSink
{
public:
	CFoldedSink( INodeTexts &texts, CReport &report, ByteOutput output );

	bool AddFrame( const CCallTree &tree, std::span<const NodeTimes> times ) override;
	bool AddFrameWithoutTimes( const CCallTree &tree ) override;
	bool Finish() override;

	static constexpr size_t MAX_DEPTH = 4096; // every line holds a whole stack

private:
	void KeepOwnTimes();
	bool WriteNode( int32_t nNode, std::string &stack );

	INodeTexts &m_Texts;
	CReport &m_Report;
	COutputBuffer m_Output;
	const CCallTree *m_pTree = nullptr; // null before the first frame
	std::vector<int64_t> m_Times;       // of all frames
	uint64_t m_nFrames = 0;
};

// Writes a line for each node of each frame that has calls or time: the frame, the node and its parent, its depth, its
// name, its calls, and its time with and without its children in microseconds. Node 0 is the frame itself.
class CCsvSink : public IFrameSink
{
public:
	CCsvSink( INodeTexts &texts, ByteOutput output );

	bool AddFrame( const CCallTree &tree, std::span<const NodeTimes> times ) override;
	bool AddFrameWithoutTimes( const CCallTree &tree ) override;
	bool Finish() override { return m_Output.Flush(); }

private:
	void AddDepths( const CCallTree &tree );
	void WriteLine( const CCallTree &tree, int32_t nNode, const NodeTimes &times, int64_t nExclusive );

	INodeTexts &m_Texts;
	COutputBuffer m_Output;
	std::vector<int32_t> m_Depths; // by node
	std::vector<int64_t> m_Exclusive;
	uint64_t m_nFrame = 0;
};
} // namespace convert
