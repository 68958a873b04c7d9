// Writes speedscope files.
#pragma once

#include "tools/convert/jsonoutput.h"
#include "tools/convert/timelinesink.h"

namespace convert
{
// One evented profile; a frame of the recording is its outermost scope. The format has no numbers of calls.
class CSpeedscopeSink : public CTimelineSink
{
public:
	CSpeedscopeSink( INodeTexts &texts, CReport &report, ByteOutput output, std::string_view title );

	bool Finish() override;

protected:
	void BeginScope( const CCallTree &tree, int32_t nNode, int64_t nTime, uint64_t nCalls ) override;
	void EndScope( int32_t nNode, int64_t nTime ) override;
	bool Flush() override { return m_Output.m_Buffer.FlushWhenLong(); }

private:
	void Event( const char *pType, int32_t nNode, int64_t nTime );

	INodeTexts &m_Texts;
	CJsonOutput m_Output;
	CJsonTextWriter m_Json;
	const CCallTree *m_pTree = nullptr; // until Finish
	int32_t m_nFrames = 0;              // nodes whose names are wanted, from the root on; speedscope calls them frames
};
} // namespace convert
