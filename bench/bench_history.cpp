// Live repaint of the budget views at 1920 pixels with 64 budgets and a full ring, against the plain drawing calls that
// the same picture takes at least.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPainter>
#include <QVBoxLayout>
#include <random>

#include "support/paintlog.h"
#include "views/budgethistorybarswidget.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"
#include "views/fakehistoryowner.h"
#include "views/fpsgraphwidget.h"

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

// The fills and lines of one repaint of the window.
struct PlainCalls
{
	std::vector<PaintOp> m_Ops;

	explicit PlainCalls( CWindow &window )
	{
		for ( QWidget *pView : window.m_Widget.findChildren<QWidget *>() )
		{
			for ( PaintOp &op : CPaintLog::OfWidget( *pView ) )
			{
				if ( op.m_Kind == PaintOp::Kind::FillRect || op.m_Kind == PaintOp::Kind::Line )
					m_Ops.push_back( std::move( op ) );
			}
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
	state.counters["calls"] = static_cast<double>( calls.m_Ops.size() );
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
