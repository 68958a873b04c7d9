// Live repaint of the budget views at 1920 pixels with 64 budgets and a full ring, against the plain drawing calls that
// the same picture takes at least.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include <random>

#include "support/paintlog.h"
#include "views/budgethistorybarswidget.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"
#include "views/fakehistoryowner.h"
#include "views/fpsgraphwidget.h"
#include "views/historypainter.h"

namespace
{
constexpr int BUDGETS = 64;

// How the frame rate of a run behaves. It decides how many segments of the curve need a gradient.
enum class Load
{
	Fast,      // above both thresholds: one colour
	Jittery,   // about the upper threshold, as with a display's vertical synchronisation
	Everything // anything between 20 and 100 frames per second, no two neighbours alike
};

float FrameMilliseconds( Load load, std::mt19937 &random )
{
	switch ( load )
	{
		case Load::Fast:
			return std::uniform_real_distribution<float>( 8.0f, 12.0f )( random );
		case Load::Jittery:
			return std::uniform_real_distribution<float>( 16.0f, 17.3f )( random );
		case Load::Everything:
			break;
	}
	return std::uniform_real_distribution<float>( 10.0f, 50.0f )( random );
}

// The budget views one above the other, as in the window, with a sample added before every repaint.
class CWindow
{
public:
	explicit CWindow( Load load )
		: m_Owner( BUDGETS )
		, m_Load( load )
		, m_Samples( m_Owner, &m_Widget )
		, m_History( m_Owner, &m_Widget )
		, m_Image( 1920, 1080, QImage::Format_RGB32 )
	{
		for ( uint32_t i = 0; i < 2 * BUDGET_RING_SIZE; i++ )
			AddSample();
		auto *pLayout = new QVBoxLayout( &m_Widget );
		pLayout->setContentsMargins( 0, 0, 0, 0 );
		pLayout->addWidget( &m_Samples, 55 );
		pLayout->addWidget( &m_History, 45 );
		m_Widget.resize( m_Image.size() );
		m_Widget.show();
		QApplication::processEvents();
	}

	void AddSample()
	{
		std::vector<uint32_t> values( BUDGETS );
		std::uniform_real_distribution<float> share( 0.5f, 1.5f );
		const float flMilliseconds = FrameMilliseconds( m_Load, m_Random );
		for ( uint32_t &nValue : values )
			nValue = static_cast<uint32_t>( flMilliseconds * 1000.0f / BUDGETS * share( m_Random ) );
		m_Owner.AddSample( values, 1000.0f / flMilliseconds );
	}

	void Repaint( QWidget &widget ) { widget.render( &m_Image, QPoint(), QRegion(), QWidget::DrawChildren ); }

	CFakeHistoryOwner m_Owner;
	Load m_Load;
	std::mt19937 m_Random{ 1 };
	QWidget m_Widget;
	CQBudgetSamplesWidget m_Samples;
	CQBudgetHistoryWidget m_History;
	QImage m_Image;
};

// The fills and lines of one repaint of the window with nothing kept from the one before.
struct PlainCalls
{
	std::vector<PaintOp> m_Ops;

	explicit PlainCalls( CWindow &window )
	{
		for ( QWidget *pView : window.m_Samples.findChildren<QWidget *>() )
			Take( CPaintLog::OfWidget( *pView ) );
		TakeHistory( window );
	}

	void TakeHistory( CWindow &window )
	{
		const BudgetViewData data = window.m_Owner.GetViewData();
		const BudgetViewStyle &style = window.m_Owner.GetViewStyle();
		const HistoryView bars =
			window.m_History.MakeView( *window.m_Widget.findChild<CQBudgetHistoryBarsWidget *>(), 0 );
		const HistoryView graph = window.m_History.MakeView( *window.m_Widget.findChild<CQFPSGraphWidget *>(), 0 );
		HistoryBarsLayout barsLayout;
		LayoutHistoryBars( barsLayout, data, bars, bars.m_Columns.AllFilled() );
		FPSCurveLayout curveLayout;
		LayoutFPSCurve( curveLayout, data, graph, FPSMarkers(), graph.m_Columns.AllFilled() );
		HistoryAxisLayout axis;

		CPaintLog log( window.m_Image.size() );
		QPainter painter( &log );
		LayoutHistoryAxis( axis, bars.m_Size, 0, HistoryAxisUnit::Milliseconds, style.m_nRowHeight );
		PaintHistoryAxis( painter, axis, style );
		PaintHistoryBars( painter, barsLayout );
		LayoutHistoryAxis( axis, graph.m_Size, 0, HistoryAxisUnit::FramesPerSecond, style.m_nRowHeight );
		PaintHistoryAxis( painter, axis, style );
		PaintFPSMarkers( painter, LayoutFPSMarkers( FPSMarkers(), graph.m_Size, 0 ), style );
		PaintFPSCurve( painter, curveLayout );
		painter.end();
		Take( log.Ops() );
	}

	void Take( const std::vector<PaintOp> &ops )
	{
		for ( const PaintOp &op : ops )
		{
			if ( op.m_Kind == PaintOp::Kind::FillRect || op.m_Kind == PaintOp::Kind::Line )
				m_Ops.push_back( op );
		}
	}

	void Replay( QImage &image ) const
	{
		QPainter painter( &image );
		for ( const PaintOp &op : m_Ops )
		{
			if ( op.m_Kind == PaintOp::Kind::FillRect )
			{
				painter.fillRect( op.m_Rect.toRect(), op.m_Colour );
				continue;
			}
			painter.setPen( op.m_Colour );
			painter.drawLine( op.m_Points[0].toPoint(), op.m_Points[1].toPoint() );
		}
	}
};

void BM_PlainCalls( benchmark::State &state, Load load )
{
	CWindow window( load );
	const PlainCalls calls( window );
	for ( auto _ : state )
		calls.Replay( window.m_Image );
	const auto nFills = std::count_if( calls.m_Ops.begin(), calls.m_Ops.end(),
		[]( const PaintOp &op ) { return op.m_Kind == PaintOp::Kind::FillRect; } );
	state.counters["fills"] = static_cast<double>( nFills );
	state.counters["lines"] = static_cast<double>( calls.m_Ops.size() ) - static_cast<double>( nFills );
}

template <class VIEW>
void BM_Repaint( benchmark::State &state, Load load )
{
	CWindow window( load );
	VIEW *pView = window.m_Widget.findChild<VIEW *>();
	for ( auto _ : state )
	{
		window.AddSample();
		window.Repaint( *pView );
	}
}

void BM_RepaintWindow( benchmark::State &state, Load load )
{
	CWindow window( load );
	for ( auto _ : state )
	{
		window.AddSample();
		window.Repaint( window.m_Widget );
	}
}

void Register( const std::string &name, Load load )
{
	const auto Add = [&]( const std::string &what, auto *pFunction ) {
		benchmark::RegisterBenchmark( ( what + "/" + name ).c_str(), pFunction, load )->Unit( benchmark::kMicrosecond );
	};
	Add( "PlainCalls", BM_PlainCalls );
	Add( "Window", BM_RepaintWindow );
	Add( "Samples", BM_Repaint<CQBudgetSamplesWidget> );
	Add( "HistoryBars", BM_Repaint<CQBudgetHistoryBarsWidget> );
	Add( "FPSGraph", BM_Repaint<CQFPSGraphWidget> );
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	qputenv( "QT_QPA_PLATFORM", "offscreen" );
	QApplication application( nArguments, ppArguments );
	benchmark::Initialize( &nArguments, ppArguments );
	if ( benchmark::ReportUnrecognizedArguments( nArguments, ppArguments ) )
		return 1;
	Register( "Fast", Load::Fast );
	Register( "Jittery", Load::Jittery );
	Register( "Everything", Load::Everything );
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
