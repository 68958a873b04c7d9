// Writes Chrome trace-event JSON.
#pragma once

#include "tools/convert/jsonoutput.h"
#include "tools/convert/timelinesink.h"

namespace convert
{
// Frames and nodes as begin and end events of one thread. Numbers of calls other than 1 are arguments of the events,
// and the file says which events are the frames, so that reading it back gives the same frames.
class CChromeSink : public CTimelineSink
{
public:
	CChromeSink( INodeTexts &texts, CReport &report, ByteOutput output, std::string_view title );

	bool Finish() override;

protected:
	void BeginScope( const CCallTree &tree, int32_t nNode, int64_t nTime, uint64_t nCalls ) override;
	void EndScope( int32_t nNode, int64_t nTime ) override;
	bool Flush() override { return m_Output.m_Buffer.FlushWhenLong(); }

private:
	void Event( const char *pPhase, int64_t nTime );

	INodeTexts &m_Texts;
	CJsonOutput m_Output;
	CJsonTextWriter m_Json;
};
} // namespace convert
