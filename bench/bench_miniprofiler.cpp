// The mini-profiler with many scopes: decoding, statistics, regeneration, painting, regrouping, memory. The baselines
// run in the same process, so that ratios mean something.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QTreeWidget>
#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "keel0/strtools.h"
#include "miniprofiler/miniprofilerdecoder.h"
#include "miniprofiler/miniprofilermodel.h"
#include "miniprofiler/miniprofilerstatistics.h"
#include "miniprofiler/miniprofilerwidget.h"

namespace
{
class CBytes
{
public:
	void U32( uint32_t nValue ) { Put( &nValue, sizeof( nValue ) ); }
	void U64( uint64_t nValue ) { Put( &nValue, sizeof( nValue ) ); }
	void Text( const std::string &text ) { Put( text.c_str(), text.size() + 1 ); }
	void EndSubrecord( size_t nStart )
	{
		const auto nEnd = static_cast<uint32_t>( m_Bytes.size() );
		std::copy_n(
			reinterpret_cast<const uint8_t *>( &nEnd ), 4, m_Bytes.begin() + static_cast<ptrdiff_t>( nStart ) + 4 );
	}

	std::vector<uint8_t> m_Bytes;

private:
	void Put( const void *pData, size_t nSize )
	{
		const auto *pBytes = static_cast<const uint8_t *>( pData );
		m_Bytes.insert( m_Bytes.end(), pBytes, pBytes + nSize );
	}
};

// Ids as a heap gives them: 64-byte steps with gaps, in no order.
std::vector<uint64_t> MakeIds( size_t nCount )
{
	std::mt19937_64 random( 1 );
	std::vector<uint64_t> ids( nCount );
	uint64_t nAddress = 0x7F0012340000;
	for ( uint64_t &nId : ids )
		nId = nAddress += 64 * ( 1 + random() % 8 );
	std::shuffle( ids.begin(), ids.end(), random );
	return ids;
}

std::vector<uint8_t> MakeData( const std::vector<uint64_t> &ids, uint32_t nSeed )
{
	std::mt19937 random( nSeed );
	CBytes bytes;
	bytes.U64( 1000 );
	bytes.U32( 0 );
	bytes.U32( 0 );
	bytes.U32( MINIPROFILER_SAMPLE_MARK );
	bytes.U32( MINIPROFILER_SAMPLE_VERSION );
	bytes.U64( 0 );
	bytes.U32( static_cast<uint32_t>( ids.size() ) );
	bytes.U32( static_cast<uint32_t>( ids.size() ) );
	for ( size_t i = 0; i < ids.size(); i++ )
	{
		bytes.U32( 0 );
		bytes.U64( ids[i] );
		bytes.U64( i == 0 ? 0 : ids[i / 8] );
		bytes.U64( random() % 1000000 );
		bytes.U64( random() % 16 );
	}
	bytes.EndSubrecord( 8 );
	return bytes.m_Bytes;
}

// Names get at least nNameLength characters.
std::vector<uint8_t> MakeNames( const std::vector<uint64_t> &ids, size_t nNameLength = 0 )
{
	CBytes bytes;
	bytes.U64( 0 );
	bytes.U32( 1 );
	bytes.U32( 0 );
	bytes.U64( 1000000000 );
	bytes.U32( static_cast<uint32_t>( ids.size() ) );
	for ( size_t i = 0; i < ids.size(); i++ )
	{
		bytes.U64( ids[i] );
		bytes.U64( 0 );
		std::string name = "Scope number " + std::to_string( i );
		name.resize( std::max( name.size(), nNameLength ), 'n' );
		bytes.Text( name );
		bytes.Text( "Budget " + std::to_string( i % 24 ) + "\nCClass" + std::to_string( i % 400 ) + "::Method" +
					std::to_string( i % 4000 ) + "\nC:\\Src\\Folder" + std::to_string( i % 40 ) + "\\File" +
					std::to_string( i % 900 ) + ".cpp\n17\nproject" + std::to_string( i % 5 ) + "\n" );
	}
	bytes.EndSubrecord( 8 );
	return bytes.m_Bytes;
}

// Whether every ring is full and in its place for good.
bool IsFull( const CMiniProfilerHistory &history )
{
	for ( uint32_t nBlock = 0; nBlock < history.BlockCount(); nBlock++ )
		if ( !history.IsWhole( nBlock ) )
			return false;
	return history.BlockCount() > 0;
}

void Fill( CMiniProfilerModel &model, const std::vector<uint64_t> &ids )
{
	std::vector<std::vector<uint8_t>> frames; // a few different ones, over and over
	for ( uint32_t i = 0; i < 4; i++ )
		frames.push_back( MakeData( ids, i ) );
	for ( size_t i = 0; !IsFull( model.History() ); i++ )
		DecodeMiniProfilerChunk( frames[i % frames.size()], model );
}

std::unique_ptr<CQMiniProfilerWidget> MakePanel( const std::vector<uint64_t> &ids, size_t nNameLength = 0 )
{
	auto pPanel = std::make_unique<CQMiniProfilerWidget>( nullptr );
	pPanel->resize( 1920, 1080 );
	pPanel->ReceiveChunk( MakeNames( ids, nNameLength ) );
	for ( uint32_t i = 0; !IsFull( pPanel->Model().History() ); i++ )
		pPanel->ReceiveChunk( MakeData( ids, i % 4 ) );
	pPanel->TakeWantedIds();
	pPanel->show();
	QApplication::processEvents();
	pPanel->RegenerateDataView();
	QApplication::processEvents();
	return pPanel;
}

// -- Decoding

void DecodeKnown( benchmark::State &state )
{
	const auto ids = MakeIds( static_cast<size_t>( state.range( 0 ) ) );
	CMiniProfilerModel model( 1000000000 );
	Fill( model, ids );
	const auto data = MakeData( ids, 7 );
	for ( auto _ : state )
		DecodeMiniProfilerChunk( data, model );
	state.SetItemsProcessed( state.iterations() * state.range( 0 ) );
}
BENCHMARK( DecodeKnown )->Arg( 10000 );

// While rings fill up: 128 chunks of samples for records that have none yet.
void DecodeFirstSamples( benchmark::State &state )
{
	const auto ids = MakeIds( static_cast<size_t>( state.range( 0 ) ) );
	const auto names = MakeNames( ids );
	const auto data = MakeData( ids, 7 );
	for ( auto _ : state )
	{
		state.PauseTiming();
		auto pModel = std::make_unique<CMiniProfilerModel>( 1000000000 );
		DecodeMiniProfilerChunk( names, *pModel );
		state.ResumeTiming();
		for ( uint32_t i = 0; i < CMiniProfilerHistory::CAPACITY; i++ )
			DecodeMiniProfilerChunk( data, *pModel );
		state.PauseTiming();
		pModel.reset();
		state.ResumeTiming();
	}
	state.SetItemsProcessed( state.iterations() * state.range( 0 ) * CMiniProfilerHistory::CAPACITY );
}
BENCHMARK( DecodeFirstSamples )->Arg( 10000 )->Unit( benchmark::kMillisecond );

// Reads the same entries and looks both of their ids up, or one of them.
template <bool bCallers>
void LookUpKnown( benchmark::State &state )
{
	const auto ids = MakeIds( static_cast<size_t>( state.range( 0 ) ) );
	CMiniProfilerModel model( 1000000000 );
	Fill( model, ids );
	CMiniProfilerModel::RecordMap map;
	for ( const auto &pRecord : model.Records() )
		map.emplace( pRecord->Id(), pRecord->HistoryIndex() );
	const auto data = MakeData( ids, 7 );
	for ( auto _ : state )
	{
		for ( const uint8_t *p = data.data() + 40, *pEnd = data.data() + data.size(); p < pEnd; p += 36 )
		{
			benchmark::DoNotOptimize( map.find( V_ReadLittleEndian64( p + 4 ) )->second );
			if ( bCallers )
				benchmark::DoNotOptimize( map.find( V_ReadLittleEndian64( p + 12 ) ) );
			benchmark::DoNotOptimize( V_ReadLittleEndian64( p + 20 ) + V_ReadLittleEndian64( p + 28 ) );
		}
	}
	state.SetItemsProcessed( state.iterations() * state.range( 0 ) );
}
BENCHMARK( LookUpKnown<false> )->Arg( 10000 );
BENCHMARK( LookUpKnown<true> )->Arg( 10000 );

// -- Statistics

void Statistics( benchmark::State &state )
{
	CMiniProfilerModel model( 1000000000 );
	Fill( model, MakeIds( static_cast<size_t>( state.range( 0 ) ) ) );
	for ( auto _ : state )
		ComputeMiniProfilerStatistics( model.History(), model.Records(), true );
}
BENCHMARK( Statistics )->Arg( 10000 )->Unit( benchmark::kMillisecond );

// One pass that only sums the same samples, record by record as they lie in memory.
void SumSamples( benchmark::State &state )
{
	CMiniProfilerModel model( 1000000000 );
	Fill( model, MakeIds( static_cast<size_t>( state.range( 0 ) ) ) );
	const CMiniProfilerHistory &history = model.History();
	CMiniProfilerHistory::Rows room; // which whole blocks do not need
	for ( auto _ : state )
	{
		for ( uint32_t nBlock = 0; nBlock < history.BlockCount(); nBlock++ )
		{
			CMiniProfilerHistory::Row sums{};
			for ( const CMiniProfilerHistory::Row &row : history.RowsOf( nBlock, room ) )
				for ( uint32_t j = 0; j < CMiniProfilerHistory::BLOCK_RECORDS; j++ )
				{
					sums.m_Ticks[j] += row.m_Ticks[j];
					sums.m_Calls[j] += row.m_Calls[j];
				}
			benchmark::DoNotOptimize( sums );
		}
	}
}
BENCHMARK( SumSamples )->Arg( 10000 )->Unit( benchmark::kMillisecond );

// The same from a ring of 128 (ticks, calls) pairs for each record, the plain way to keep them.
void SumPlainRings( benchmark::State &state )
{
	const auto nRecords = static_cast<size_t>( state.range( 0 ) );
	std::vector<MiniProfilerSample> samples( nRecords * 128, MiniProfilerSample{ 3, 4 } );
	for ( auto _ : state )
	{
		for ( size_t i = 0; i < nRecords; i++ )
		{
			MiniProfilerSample sum;
			for ( size_t j = 0; j < 128; j++ )
			{
				sum.m_nTicks += samples[i * 128 + j].m_nTicks;
				sum.m_nCalls += samples[i * 128 + j].m_nCalls;
			}
			benchmark::DoNotOptimize( sum );
		}
	}
}
BENCHMARK( SumPlainRings )->Arg( 10000 )->Unit( benchmark::kMillisecond );

// -- The panel

void Regenerate( benchmark::State &state )
{
	const auto ids = MakeIds( static_cast<size_t>( state.range( 0 ) ) );
	const auto pPanel = MakePanel( ids );
	uint32_t nSeed = 100;
	for ( auto _ : state )
	{
		state.PauseTiming(); // new values, so that rows change places
		pPanel->ReceiveChunk( MakeData( ids, nSeed++ ) );
		state.ResumeTiming();
		pPanel->RegenerateDataView();
	}
}
BENCHMARK( Regenerate )->Arg( 1000 )->Arg( 10000 )->Arg( 100000 )->Unit( benchmark::kMillisecond )->MinTime( 1.0 );

void PaintScreen( benchmark::State &state )
{
	const auto pPanel = MakePanel( MakeIds( 10000 ) );
	auto *pTree = pPanel->findChild<QTreeWidget *>();
	QImage image( pTree->viewport()->size(), QImage::Format_ARGB32_Premultiplied );
	for ( auto _ : state )
		pTree->viewport()->render( &image );
}
BENCHMARK( PaintScreen )->Unit( benchmark::kMillisecond );

// The same with 60 names of a million characters, behind a regeneration and a new layout of the view.
void PaintLongNames( benchmark::State &state )
{
	const auto pPanel = MakePanel( MakeIds( 60 ), 1000000 );
	auto *pTree = pPanel->findChild<QTreeWidget *>();
	QImage image( pTree->viewport()->size(), QImage::Format_ARGB32_Premultiplied );
	for ( auto _ : state )
	{
		pPanel->RegenerateDataView();
		pTree->doItemsLayout();
		pTree->viewport()->render( &image );
	}
}
BENCHMARK( PaintLongNames )->Unit( benchmark::kMillisecond );

void SwitchGroupMode( benchmark::State &state )
{
	const auto pPanel = MakePanel( MakeIds( 10000 ) );
	auto *pMode = pPanel->findChildren<QComboBox *>().first();
	int nMode = 0;
	for ( auto _ : state )
	{
		nMode = nMode % ( pMode->count() - 1 ) + 1;
		pMode->setCurrentIndex( nMode );
		QApplication::processEvents(); // the layout of the view
	}
}
BENCHMARK( SwitchGroupMode )->Unit( benchmark::kMillisecond );

// Everything that a record costs but its texts, whose bytes are taken off.
void RecordMemory( benchmark::State &state )
{
	const auto ids = MakeIds( 10000 );
	const auto names = MakeNames( ids );
	for ( auto _ : state )
	{
		const auto pPanel = std::make_unique<CQMiniProfilerWidget>( nullptr );
		const auto Used = []
		{
			const auto info = mallinfo2();
			return info.uordblks + info.hblkhd;
		};
		const size_t nBefore = Used();
		for ( uint32_t i = 0; !IsFull( pPanel->Model().History() ); i++ )
			pPanel->ReceiveChunk( MakeData( ids, i % 4 ) );
		pPanel->TakeWantedIds();
		pPanel->RegenerateDataView();
		state.counters["bytes_per_record_unnamed"] = static_cast<double>( Used() - nBefore ) / 10000;
		pPanel->ReceiveChunk( names );
		pPanel->RegenerateDataView();
		state.counters["bytes_per_record_named"] = static_cast<double>( Used() - nBefore ) / 10000;
	}
}
BENCHMARK( RecordMemory )->Iterations( 1 );
} // namespace

int main( int nArguments, char **ppArguments )
{
	if ( qEnvironmentVariableIsEmpty( "QT_QPA_PLATFORM" ) )
		qputenv( "QT_QPA_PLATFORM", "offscreen" );
	QApplication application( nArguments, ppArguments );
	benchmark::Initialize( &nArguments, ppArguments );
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
