// Live repaint of names and bars of 64 budgets in a strip of 1920 x 600 pixels, against filling the same rectangles
// (the background of both widgets, boxes, bars and captions) with plain QPainter::fillRect.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPainter>
#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

#include "support/paintlog.h"
#include "views/fakehistoryowner.h"
#include "views/stripfixture.h"

namespace
{
constexpr int BUDGETS = 64;

// The strip, which a new sample reaches before every repaint. Peaks are reset after three seconds' worth of samples, as
// the store does.
class CLiveStrip
{
public:
	explicit CLiveStrip( bool bShowAverages )
		: m_Owner( BUDGETS - 1 )
		, m_Strip( m_Owner, QSize( 1920, 600 ) )
		, m_Image( 1920, 600, QImage::Format_RGB32 )
	{
		m_Owner.m_Data.m_bShowAverages = bShowAverages;
		for ( int i = 0; i < 300; i++ )
			AddSample();
	}

	void AddSample()
	{
		std::vector<uint32_t> values( BUDGETS - 1 );
		std::normal_distribution<double> noise( 1.0, 0.15 );
		for ( size_t i = 0; i < values.size(); i++ )
			values[i] =
				static_cast<uint32_t>( std::max( 0.0, 170.0 * static_cast<double>( i + 1 ) * noise( m_Random ) ) );
		m_Owner.AddSample( values );
		const bool bReset = m_Owner.m_Data.m_nSampleCount % 180 == 0;
		const BudgetViewData data = m_Owner.GetViewData();
		for ( int i = 0; i < BUDGETS; i++ )
		{
			const auto nBudget = static_cast<size_t>( i );
			const uint32_t nValue = data.Value( nBudget, BudgetSlot( data.SelectedSample() ) );
			m_Owner.SetPeak( i, bReset ? nValue : std::max( nValue, data.Peak( nBudget ) ) );
		}
	}

	void Repaint()
	{
		for ( QWidget *pWidget :
			{ static_cast<QWidget *>( &m_Strip.Names() ), static_cast<QWidget *>( &m_Strip.Bars() ) } )
			pWidget->render( &m_Image, PlaceOf( *pWidget ), QRegion(), QWidget::DrawWindowBackground );
	}

	QPoint PlaceOf( QWidget &widget ) { return widget.mapTo( &m_Strip.Widget(), QPoint() ); }

	CFakeHistoryOwner m_Owner;
	std::mt19937 m_Random{ 1 };
	CStrip m_Strip;
	QImage m_Image;
};

struct Fill
{
	QRect m_Rect;
	QColor m_Colour;
};

std::vector<Fill> FillsOf( CLiveStrip &strip )
{
	std::vector<Fill> fills;
	for ( QWidget *pWidget :
		{ static_cast<QWidget *>( &strip.m_Strip.Names() ), static_cast<QWidget *>( &strip.m_Strip.Bars() ) } )
	{
		const QPoint ptPlace = strip.PlaceOf( *pWidget );
		fills.push_back( { pWidget->rect().translated( ptPlace ), pWidget->palette().color( QPalette::Window ) } );
		for ( const PaintOp &op : CPaintLog::OfWidget( *pWidget ) )
		{
			if ( op.m_Kind == PaintOp::Kind::FillRect )
				fills.push_back( { op.m_Rect.toRect().translated( ptPlace ), op.m_Colour } );
		}
	}
	return fills;
}

void BM_FillRects( benchmark::State &state, bool bShowAverages )
{
	CLiveStrip strip( bShowAverages );
	const std::vector<Fill> fills = FillsOf( strip );
	for ( auto _ : state )
	{
		QPainter painter( &strip.m_Image );
		for ( const Fill &fill : fills )
			painter.fillRect( fill.m_Rect, fill.m_Colour );
	}
	state.counters["rectangles"] = static_cast<double>( fills.size() );
}

void BM_Repaint( benchmark::State &state, bool bShowAverages )
{
	CLiveStrip strip( bShowAverages );
	for ( auto _ : state )
	{
		state.PauseTiming();
		strip.AddSample();
		state.ResumeTiming();
		strip.Repaint();
	}
}

// Adds the ratios of the run to Google Benchmark's report: of the medians, so that a disturbed repetition does not
// count.
class CRatioReporter final : public benchmark::ConsoleReporter
{
public:
	void ReportRuns( const std::vector<Run> &runs ) override
	{
		ConsoleReporter::ReportRuns( runs );
		for ( const Run &run : runs )
		{
			if ( run.aggregate_name == "median" )
				m_Medians[run.run_name.function_name] = run.GetAdjustedCPUTime();
		}
	}

	void PrintRatios() const
	{
		for ( const char *pWhat : { "names and bars", "names, bars and averages" } )
		{
			const auto repaint = m_Medians.find( std::string( "Repaint/" ) + pWhat );
			const auto fills = m_Medians.find( std::string( "FillRects/" ) + pWhat );
			if ( repaint != m_Medians.end() && fills != m_Medians.end() )
				std::printf( "%s: %.2f times the fillRect calls\n", pWhat, repaint->second / fills->second );
		}
	}

private:
	std::map<std::string, double> m_Medians; // CPU time
};

void Register( const std::string &what, bool bShowAverages )
{
	const auto add = [&]( const std::string &name, auto *pFunction )
	{
		benchmark::RegisterBenchmark( ( name + what ).c_str(), pFunction, bShowAverages )
			->Unit( benchmark::kMicrosecond )
			->Repetitions( 15 )
			->ReportAggregatesOnly();
	};
	add( "FillRects/", BM_FillRects );
	add( "Repaint/", BM_Repaint );
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	qputenv( "QT_QPA_PLATFORM", "offscreen" );
	QApplication application( nArguments, ppArguments );
	benchmark::Initialize( &nArguments, ppArguments );
	if ( benchmark::ReportUnrecognizedArguments( nArguments, ppArguments ) )
		return 1;
	Register( "names and bars", false );
	Register( "names, bars and averages", true );
	CRatioReporter reporter;
	benchmark::RunSpecifiedBenchmarks( &reporter );
	reporter.PrintRatios();
	return 0;
}
