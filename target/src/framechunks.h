// Writes what consoles are sent about frames. Every function appends one whole chunk, header included.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "framequeue.h"

namespace showbudget
{
using Bytes = std::vector<uint8_t>;

void AppendChunk( Bytes &out, uint32_t nType, std::span<const uint8_t> payload );

// Turns ticks into microseconds so that the budgets of a frame add up to its length, and the lengths of frames to the
// time that passed: times are rounded down on one axis, and differences are taken of rounded times.
class CMicroseconds
{
public:
	explicit CMicroseconds( uint64_t nTickFrequency )
		: m_nFrequency( nTickFrequency )
	{
	}

	// The frame's values in the order of the chunks: "Other" last. It takes what the rest leaves.
	std::span<const uint32_t> Convert( const Frame &frame );

private:
	uint64_t At( uint64_t nTicks ) const;

	uint64_t m_nFrequency;
	uint64_t m_nOrigin = 0; // the first frame's beginning
	std::vector<uint32_t> m_Values;
};

// Frames per second over the averaged frames; 0 when there is none.
float AveragedFrameRate( const FrameHeader &header, uint64_t nTickFrequency );

// 'PCAT' with the first nBudgets budgets of the registry, "Other" last.
void AppendCategories( Bytes &out, uint32_t nBudgets );
// 'PCPU'
void AppendSample( Bytes &out, bool bContinuation, float flFrameRate, std::span<const uint32_t> values );

// Writes one 'PMPF': construct, then any of the blocks, then Finish.
class CMiniProfilerWriter
{
public:
	CMiniProfilerWriter( Bytes &out, uint64_t nServiceTicks );
	CMiniProfilerWriter( const CMiniProfilerWriter & ) = delete;
	CMiniProfilerWriter &operator=( const CMiniProfilerWriter & ) = delete;

	// The block of calls and times. It carries the mark that says that they are there.
	void BeginData( uint32_t nRegistered );
	void AddEntry( const FrameEntry &entry );
	void EndData();

	// The block of names: begin, a name for each site, end.
	void BeginNames( uint64_t nTickFrequency );
	void AddName( uint32_t nSite );
	void EndNames();

	void Finish();
	size_t Size() const { return m_Out.size() - m_nBegin; } // bytes so far, the chunk header included

private:
	void U32( uint32_t nValue );
	void U64( uint64_t nValue );
	void Text( std::string_view text );
	void PatchU32( size_t nAt, uint32_t nValue );
	uint32_t PayloadSize() const;
	void BeginBlock( uint32_t nKind );
	void EndBlock();

	Bytes &m_Out;
	size_t m_nBegin; // of the chunk
	size_t m_nBlock = 0;
	uint32_t m_nCount = 0; // entries or names of the block
};
} // namespace showbudget
