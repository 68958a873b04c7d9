// 'PMPF' chunks: the decoder and its model against a slow decoder that shares no code with them. Both must agree on
// records, names, samples, parents, wanted ids, counters and warnings.
//
// Input: chunks, each as u8 flags (1: paused), u16 payload length (little-endian), payload; the last may be shorter.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "keptwarnings.h"
#include "memorylimit.h"
#include "miniprofiler/miniprofilerdecoder.h"
#include "miniprofiler/miniprofilermodel.h"
#include "require.h"

namespace
{
using Bytes = std::vector<uint8_t>;

uint64_t Number( const Bytes &bytes, uint64_t nOffset, int nBytes )
{
	uint64_t nValue = 0;
	for ( int i = nBytes - 1; i >= 0; i-- )
		nValue = nValue * 256 + bytes.at( nOffset + static_cast<uint64_t>( i ) ); // at: a wrong offset is seen
	return nValue;
}

// The slow decoder. Every record has a ring that really moves.
struct SlowRecord
{
	std::string m_Name;
	std::string m_Description;
	uint64_t m_nCaller = 0;
	uint64_t m_nStaticParent = 0;
	std::deque<std::pair<uint64_t, uint64_t>> m_Ring = std::deque<std::pair<uint64_t, uint64_t>>( 128 );
	uint32_t m_nCount = 0;

	void Advance()
	{
		m_Ring.push_front( m_Ring.back() );
		m_Ring.pop_back();
		m_nCount = m_nCount < 128 ? m_nCount + 1 : 128;
	}
};

struct SlowModel
{
	std::map<uint64_t, SlowRecord> m_Records;
	std::vector<uint64_t> m_Wanted;
	std::vector<std::string> m_Warnings;
	std::deque<uint64_t> m_Costs;
	uint64_t m_nFrequency = 1;
	uint64_t m_nRegistered = 0, m_nTransmitted = 0, m_nPacketSize = 0;
	int64_t m_nNames = 0;
	uint32_t m_nCostSamples = 0;

	SlowRecord &Touch( uint64_t nId, bool bAdvance )
	{
		const bool bNew = !m_Records.contains( nId );
		SlowRecord &record = m_Records[nId];
		if ( bNew )
		{
			m_Wanted.push_back( nId );
			if ( bAdvance )
				record.Advance();
		}
		return record;
	}

	bool Decode( const Bytes &chunk, bool bPaused )
	{
		if ( chunk.size() < 8 )
		{
			m_Warnings.push_back( "KESTO_MINIPROFILERS chunk of " + std::to_string( chunk.size() ) +
								  " bytes is too short for its service time\n" );
			return false;
		}
		const size_t nWarnings = m_Warnings.size();
		bool bData = false;
		for ( uint64_t nAt = 8; nAt + 8 <= chunk.size(); )
		{
			const uint64_t nKind = Number( chunk, nAt, 4 ), nNext = Number( chunk, nAt + 4, 4 ), nData = nAt + 8;
			if ( nNext > chunk.size() || nNext < nData )
			{
				m_Warnings.push_back( "Malformed KESTO_MINIPROFILERS chunk " +
									  std::to_string( static_cast<int32_t>( nKind ) ) + ", length " +
									  std::to_string( static_cast<uint32_t>( nNext - nData ) ) +
									  " over expected length <= " + std::to_string( chunk.size() - nData ) + "\n" );
				break;
			}
			if ( nKind == 0 && !bPaused )
			{
				Data( chunk, nData, nNext, !bData );
				bData = true;
			}
			if ( nKind == 1 )
				Names( chunk, nData, nNext );
			nAt = nNext;
		}
		TellOnlyTheFirst( nWarnings );
		m_Costs.push_front( Number( chunk, 0, 8 ) );
		if ( m_Costs.size() > 64 )
			m_Costs.pop_back();
		m_nPacketSize = chunk.size();
		return bData;
	}

	// Of a chunk's warnings, which begin there; that it is malformed is told whatever came before.
	void TellOnlyTheFirst( size_t nFirst )
	{
		std::string malformed;
		if ( m_Warnings.size() > nFirst && m_Warnings.back().starts_with( "Malformed" ) )
		{
			malformed = m_Warnings.back();
			m_Warnings.pop_back();
		}
		const size_t nTold = std::min<size_t>( m_Warnings.size() - nFirst, 16 );
		const size_t nMore = m_Warnings.size() - nFirst - nTold;
		m_Warnings.resize( nFirst + nTold );
		if ( !malformed.empty() )
			m_Warnings.push_back( malformed );
		if ( nMore > 0 )
			m_Warnings.push_back( std::to_string( nMore ) + " more problems in the same KESTO_MINIPROFILERS chunk\n" );
	}

	void Data( const Bytes &chunk, uint64_t nData, uint64_t nNext, bool bFirst )
	{
		if ( bFirst )
			for ( auto &[nId, record] : m_Records )
				record.Advance();
		m_nCostSamples = m_nCostSamples < 128 ? m_nCostSamples + 1 : 128;
		uint64_t nAt = nData + 24;
		if ( nAt > nNext )
		{
			m_Warnings.push_back( "Misaligned Miniprofiler data stream\n" );
			return;
		}
		const bool bMark = Number( chunk, nData, 8 ) == 0x14B4D5331 && Number( chunk, nData + 8, 8 ) == 0;
		m_nRegistered = Number( chunk, nData + 16, 4 );
		m_nTransmitted = Number( chunk, nData + 20, 4 );
		for ( ; nAt < nNext && nAt + 36 <= chunk.size(); nAt += 36 )
		{
			const uint64_t nId = Number( chunk, nAt + 4, 8 ), nCaller = Number( chunk, nAt + 12, 8 );
			if ( nId == 0 )
				continue;
			SlowRecord &record = Touch( nId, true );
			if ( bMark && record.m_nCount > 0 )
				record.m_Ring.front() = { Number( chunk, nAt + 20, 8 ), Number( chunk, nAt + 28, 8 ) };
			if ( nCaller != 0 )
			{
				Touch( nCaller, false );
				record.m_nCaller = nCaller;
			}
		}
		if ( nAt != nNext )
			m_Warnings.push_back( "Misaligned Miniprofiler data stream\n" );
	}

	void Names( const Bytes &chunk, uint64_t nData, uint64_t nNext )
	{
		uint64_t nAt = nData + 12;
		if ( nAt > nNext )
		{
			m_Warnings.push_back( "Misaligned Miniprofiler name data stream\n" );
			return;
		}
		if ( Number( chunk, nData, 8 ) != 0 )
			m_nFrequency = Number( chunk, nData, 8 );
		const int64_t nCount = static_cast<int32_t>( Number( chunk, nData + 8, 4 ) );
		for ( int64_t i = 0; i < nCount && nAt < nNext; i++ )
		{
			std::string texts[2];
			uint64_t nText = nAt + 16;
			for ( std::string &text : texts )
			{
				while ( nText < nNext && chunk[nText] != 0 )
					text += static_cast<char>( chunk[nText++] );
				if ( nText >= nNext )
				{
					m_Warnings.push_back( "no end of string in Miniprofiler name data stream\n" );
					return;
				}
				nText++;
			}
			const uint64_t nId = Number( chunk, nAt, 8 ), nParent = Number( chunk, nAt + 8, 8 );
			nAt = nText;
			if ( nId == 0 )
				continue;
			SlowRecord &record = Touch( nId, false );
			record.m_Name = texts[0];
			record.m_Description = texts[1];
			if ( nParent != 0 )
			{
				Touch( nParent, false );
				record.m_nStaticParent = nParent;
			}
		}
		m_nNames = nCount;
		if ( nAt != nNext )
			m_Warnings.push_back( "Misaligned Miniprofiler name data stream\n" );
	}
};

uint64_t IdOf( const CQMiniProfilerRecord *pRecord )
{
	return pRecord ? pRecord->Id() : 0;
}

void CompareRecord( const CMiniProfilerModel &model, const CQMiniProfilerRecord &record, const SlowRecord &expected )
{
	Require( record.Name() == QString::fromUtf8( expected.m_Name.c_str() ), "the name" );
	Require( record.Description() == QString::fromUtf8( expected.m_Description.c_str() ), "the description" );
	Require( IdOf( record.m_pCaller ) == expected.m_nCaller, "the caller" );
	Require( IdOf( record.m_pStaticParent ) == expected.m_nStaticParent, "the static parent" );
	const uint32_t nIndex = record.HistoryIndex();
	Require( model.History().Count( nIndex ) == expected.m_nCount, "the number of samples" );
	for ( uint32_t i = 0; i < expected.m_nCount; i++ )
	{
		const MiniProfilerSample sample = model.History().At( nIndex, i );
		Require(
			sample.m_nTicks == expected.m_Ring[i].first && sample.m_nCalls == expected.m_Ring[i].second, "a sample" );
	}
}

void Compare( CMiniProfilerModel &model, SlowModel &slow )
{
	Require( CKeptWarnings::Texts() == slow.m_Warnings, "the warnings" );
	Require( model.TakeWantedIds() == slow.m_Wanted, "the wanted ids" );
	Require( model.Records().size() == slow.m_Records.size(), "the number of records" );
	for ( const auto &pRecord : model.Records() )
	{
		const auto found = slow.m_Records.find( pRecord->Id() );
		Require( found != slow.m_Records.end(), "a record's id" );
		CompareRecord( model, *pRecord, found->second );
	}
	Require( model.CostHistory().Count() == slow.m_Costs.size(), "the number of costs" );
	for ( uint32_t i = 0; i < slow.m_Costs.size(); i++ )
		Require( model.CostHistory().At( i ) == slow.m_Costs[i], "a cost" );
	Require( model.CostSampleCount() == slow.m_nCostSamples, "the cost record's samples" );
	Require( model.TickFrequency() == slow.m_nFrequency, "the frequency" );
	Require( model.Counters().m_nRegistered == slow.m_nRegistered, "the scopes registered" );
	Require( model.Counters().m_nTransmitted == slow.m_nTransmitted, "the scopes transmitted" );
	Require( model.Counters().m_nPacketSize == slow.m_nPacketSize, "the packet size" );
	Require( model.Counters().m_nNamesSent == slow.m_nNames, "the names sent" );
}

bool Decode( const Bytes &chunk, CMiniProfilerModel &model )
{
	CMemoryLimit limit( chunk.size() );
	return DecodeMiniProfilerChunk( chunk, model );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	CKeptWarnings::Begin();

	CMiniProfilerModel model( 1 );
	SlowModel slow;
	Bytes input( pData, pData + nSize );
	for ( size_t nAt = 0; nAt + 3 <= input.size(); )
	{
		const bool bPaused = ( input[nAt] & 1 ) != 0;
		const size_t nLength = std::min<size_t>( Number( input, nAt + 1, 2 ), input.size() - nAt - 3 );
		nAt += 3;
		// A block of its own, so that a read past its end is seen.
		const Bytes chunk(
			input.begin() + static_cast<ptrdiff_t>( nAt ), input.begin() + static_cast<ptrdiff_t>( nAt + nLength ) );
		nAt += nLength;
		model.SetPaused( bPaused );
		Require( Decode( chunk, model ) == slow.Decode( chunk, bPaused ), "the result" );
	}
	Compare( model, slow );
	return 0;
}
