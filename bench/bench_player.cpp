// The player with a recording of 5,000 nodes: opening, the first flame graph, another frame, zooming. Processor time.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QWheelEvent>

#include "recordingbytes.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestomemoryreader.h"
#include "recordings/kestoplayerwidget.h"

namespace
{
constexpr int64_t MEGABYTES = 60;

CRefPtr<CKestoFile> Parse( const std::vector<uint8_t> &bytes )
{
	CKestoMemoryReader reader( bytes );
	return CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
}

// The baseline of opening.
void BM_Parse( benchmark::State &state )
{
	const std::vector<uint8_t> &bytes = Recording( MEGABYTES );
	for ( auto _ : state )
		benchmark::DoNotOptimize( Parse( bytes ) );
}

// With progress; from the call to the end of its views' first painting.
void BM_OpenInPlayer( benchmark::State &state )
{
	QTemporaryDir folder;
	QFile file( folder.filePath( "large.kesto" ) );
	const std::vector<uint8_t> &bytes = Recording( MEGABYTES );
	if ( !file.open( QIODevice::WriteOnly ) ||
		 file.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<qint64>( bytes.size() ) ) < 0 )
		return state.SkipWithError( "no file" );
	file.close();
	for ( auto _ : state )
	{
		state.PauseTiming();
		CQKestoPlayerWidget player( nullptr );
		player.resize( 1280, 760 );
		player.show();
		QCoreApplication::processEvents();
		state.ResumeTiming();
		if ( !player.OpenRecording( file.fileName() ) )
			state.SkipWithError( "not opened" );
		state.PauseTiming();
	}
}

class CShownPlayer
{
public:
	CShownPlayer()
		: m_pFile( Parse( Recording( 4 ) ) )
	{
		m_Player.resize( 1280, 760 );
		m_Player.show();
		m_Player.SetRecording( m_pFile.Get() );
		m_Player.OnSetTick( 1 ); // the first frame has no timings
		Paint();
	}

	void Paint()
	{
		QCoreApplication::processEvents();
		m_Player.grab();
	}

	CRefPtr<CKestoFile> m_pFile;
	CQKestoPlayerWidget m_Player{ nullptr };
};

// Tree, rows and bars of a recording that is parsed, up to the first picture of it.
void BM_FirstFlameGraph( benchmark::State &state )
{
	const CRefPtr<CKestoFile> pFile = Parse( Recording( 4 ) );
	const auto pRows = std::make_shared<const NodeRows>( *pFile );
	for ( auto _ : state )
	{
		state.PauseTiming();
		CQFlamegraphWidget flames;
		flames.resize( 800, 600 );
		flames.show();
		QCoreApplication::processEvents();
		state.ResumeTiming();
		flames.SetRecording( pFile.Get(), pRows );
		flames.SetFrame( pFile->GetFrame( 1 ) );
		flames.grab();
		state.PauseTiming();
	}
}

void BM_NextFrame( benchmark::State &state )
{
	CShownPlayer shown;
	int nFrame = 1;
	for ( auto _ : state )
	{
		nFrame = nFrame % ( shown.m_pFile->GetFrameCount() - 1 ) + 1;
		shown.m_Player.OnSetTick( nFrame );
		shown.Paint();
	}
}

void BM_ZoomStep( benchmark::State &state )
{
	CShownPlayer shown;
	auto &viewport = *shown.m_Player.findChild<CQFlamegraphWidget *>()->viewport();
	int nDelta = 120;
	for ( auto _ : state )
	{
		QWheelEvent event( QPointF( 300, 300 ), viewport.mapToGlobal( QPoint( 300, 300 ) ), QPoint(),
			QPoint( 0, nDelta ), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false );
		QCoreApplication::sendEvent( &viewport, &event );
		shown.Paint();
		nDelta = -nDelta;
	}
}

BENCHMARK( BM_Parse )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_OpenInPlayer )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_FirstFlameGraph )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_NextFrame )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_ZoomStep )->Unit( benchmark::kMillisecond );
} // namespace

int main( int nArguments, char **ppArguments )
{
	QApplication application( nArguments, ppArguments );
	benchmark::Initialize( &nArguments, ppArguments );
	benchmark::RunSpecifiedBenchmarks();
	benchmark::Shutdown();
	return 0;
}
