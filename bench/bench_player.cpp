// The player with recordings of 5,000 nodes: opening (of megabytes), the first flame graph, another frame, zooming.
// Processor time.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <map>
#include <memory>

#include "recordingbytes.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestomemoryreader.h"
#include "recordings/kestoplayerwidget.h"

namespace
{
CRefPtr<CKestoFile> Parse( const std::vector<uint8_t> &bytes )
{
	CKestoMemoryReader reader( bytes );
	return CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
}

// A file that is there as long as the program; empty when it could not be written.
const QString &RecordingPath( int64_t nMegabytes )
{
	static const QTemporaryDir s_Folder;
	static std::map<int64_t, QString> s_Paths;
	QString &path = s_Paths[nMegabytes];
	if ( !path.isEmpty() )
		return path;
	QFile file( s_Folder.filePath( QStringLiteral( "%1.kesto" ).arg( nMegabytes ) ) );
	const std::vector<uint8_t> &bytes = Recording( nMegabytes );
	const auto nSize = static_cast<qint64>( bytes.size() );
	if ( file.open( QIODevice::WriteOnly ) &&
		 file.write( reinterpret_cast<const char *>( bytes.data() ), nSize ) == nSize )
		path = file.fileName();
	return path;
}

// The baselines of opening: the file into fresh memory, and the parse of bytes in memory.
void BM_Read( benchmark::State &state )
{
	const QString path = RecordingPath( state.range( 0 ) );
	for ( auto _ : state )
	{
		QFile file( path );
		if ( !file.open( QIODevice::ReadOnly ) )
			return state.SkipWithError( "no file" );
		benchmark::DoNotOptimize( file.readAll() );
	}
}

void BM_Parse( benchmark::State &state )
{
	const std::vector<uint8_t> &bytes = Recording( state.range( 0 ) );
	for ( auto _ : state )
		benchmark::DoNotOptimize( Parse( bytes ) );
}

// With progress, up to where the first frame is set.
void BM_OpenInPlayer( benchmark::State &state )
{
	const QString path = RecordingPath( state.range( 0 ) );
	for ( auto _ : state )
	{
		state.PauseTiming();
		auto pPlayer = std::make_unique<CQKestoPlayerWidget>( nullptr );
		pPlayer->resize( 1280, 760 );
		pPlayer->show();
		QCoreApplication::processEvents();
		state.ResumeTiming();
		const bool bOpened = pPlayer->OpenRecording( path );
		state.PauseTiming();
		pPlayer.reset();
		state.ResumeTiming();
		if ( !bOpened )
			return state.SkipWithError( "not opened" );
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

// Bars of a recording that is parsed, up to the first picture of them.
void BM_FirstFlameGraph( benchmark::State &state )
{
	const CRefPtr<CKestoFile> pFile = Parse( Recording( 4 ) );
	const auto pRows = std::make_shared<const NodeRows>( *pFile );
	for ( auto _ : state )
	{
		state.PauseTiming();
		auto pFlames = std::make_unique<CQFlamegraphWidget>();
		pFlames->resize( 800, 600 );
		pFlames->show();
		QCoreApplication::processEvents();
		state.ResumeTiming();
		pFlames->SetRecording( pFile.Get(), pRows );
		pFlames->SetFrame( pFile->GetFrame( 1 ) );
		pFlames->grab();
		state.PauseTiming();
		pFlames.reset();
		state.ResumeTiming();
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

BENCHMARK( BM_Read )->Arg( 60 )->Arg( 300 )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_Parse )->Arg( 60 )->Arg( 300 )->Unit( benchmark::kMillisecond );
BENCHMARK( BM_OpenInPlayer )->Arg( 60 )->Arg( 300 )->Unit( benchmark::kMillisecond );
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
