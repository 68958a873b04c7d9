#include "views/budgethistorywidget.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollBar>
#include <QSplitter>
#include <QToolTip>
#include <QVBoxLayout>
#include <algorithm>

#include "views/budgethistorybarswidget.h"
#include "views/fpsgraphwidget.h"
#include "views/framedpanel.h"
#include "views/historykeys.h"
#include "views/layoutformats.h"
#include "views/layoutsettings.h"
#include "views/sampledescription.h"
#include "views/samplestepping.h"

static constexpr const char *SPLITTER_KEY = "budget_history_splitter_sizes";

CQBudgetHistoryWidget::CQBudgetHistoryWidget( IBudgetViewOwner &owner, QWidget *pParent )
	: QWidget( pParent )
	, m_Owner( owner )
	, m_Measures( HistoryMeasures::Make( owner.GetViewStyle() ) )
	, m_pSplitter( new QSplitter( Qt::Vertical ) )
	, m_pScrollBar( new QScrollBar( Qt::Horizontal ) )
	, m_pBars( new CQBudgetHistoryBarsWidget( owner, *this ) )
	, m_pGraph( new CQFPSGraphWidget( owner, *this ) )
	, m_pCursorLabel( new QLabel )
{
	setFocusPolicy( Qt::StrongFocus );

	m_pSplitter->addWidget( new CQFramedPanel( m_pBars ) );
	m_pSplitter->addWidget( new CQFramedPanel( m_pGraph ) );
	if ( KeyValues *pSettings = owner.GetViewSettings() )
		m_pSplitter->restoreState( ReadLayout( *pSettings, SPLITTER_KEY, &IsSplitterState ) );

	m_pScrollBar->hide();
	m_pScrollBar->setToolTip( HistoryKeysText() );
	connect( m_pScrollBar, SIGNAL( valueChanged( int ) ), SLOT( OnValueChanged() ) );

	auto *pLayout = new QVBoxLayout( this );
	pLayout->setContentsMargins( 0, 0, 0, 0 );
	pLayout->addWidget( m_pSplitter );
	pLayout->addWidget( m_pScrollBar );

	m_pCursorLabel->setFrameShape( QFrame::Panel );
	m_pCursorLabel->setFrameShadow( QFrame::Sunken );
	m_pCursorLabel->setToolTip( HistoryKeysText() );
	owner.AddCursorLabel( m_pCursorLabel );
	m_pCursorLabel->hide();
}

QSize CQBudgetHistoryWidget::sizeHint() const
{
	const float flScale = m_Owner.GetViewStyle().m_flUIScale;
	return QSize( static_cast<int>( flScale * 1200 ), static_cast<int>( flScale * 250 ) );
}

void CQBudgetHistoryWidget::SetCursorMode( bool bOn )
{
	m_bCursorMode = bOn;
	m_bDragging = false;
	UpdateScrollBar();
	if ( bOn )
	{
		const uint32_t nCount = m_Owner.GetViewData().m_nSampleCount;
		m_nCursor = nCount > 0 ? nCount - 1 : 0;
		UpdateCursorLabel();
	}
	if ( m_pCursorLabel )
		m_pCursorLabel->setVisible( bOn );
	update();
}

void CQBudgetHistoryWidget::OnSamplesCleared()
{
	m_nCursor = 0;
	m_pBars->OnSamplesCleared();
	m_pGraph->OnSamplesCleared();
	UpdateScrollBar();
	UpdateCursorLabel();
	update();
}

void CQBudgetHistoryWidget::SaveSettings( KeyValues &settings ) const
{
	WriteLayout( settings, SPLITTER_KEY, m_pSplitter->saveState() );
	m_pBars->SaveSettings( settings );
	m_pGraph->SaveSettings( settings );
}

int CQBudgetHistoryWidget::VisibleColumns() const
{
	return HistoryVisibleColumns(
		m_Measures, std::min( m_pBars->contentsRect().width(), m_pGraph->contentsRect().width() ) );
}

HistoryColumns CQBudgetHistoryWidget::Columns() const
{
	HistoryColumns columns;
	columns.m_Measures = m_Measures;
	columns.m_nVisible = VisibleColumns();
	columns.m_nSampleCount = m_Owner.GetViewData().m_nSampleCount;
	columns.m_bScrolled = !m_pScrollBar->isHidden();
	columns.m_nFirstSample = m_nScrollBase + static_cast<uint32_t>( m_pScrollBar->value() );
	return columns;
}

HistoryView CQBudgetHistoryWidget::MakeView( const QWidget &view, int nZoomStep ) const
{
	HistoryView made;
	made.m_Size = view.contentsRect().size();
	made.m_nZoomStep = nZoomStep;
	made.m_Columns = Columns();
	if ( m_bCursorMode )
		made.m_Cursor = m_nCursor;
	return made;
}

HistoryPictureKey CQBudgetHistoryWidget::MakePictureKey( const HistoryView &view ) const
{
	HistoryPictureKey key;
	key.m_Size = view.m_Size;
	key.m_flPixelRatio = devicePixelRatioF();
	key.m_nZoomStep = view.m_nZoomStep;
	key.m_nVisible = view.m_Columns.m_nVisible;
	key.m_pSamples = m_Owner.GetViewData().m_Blocks.data();
	return key;
}

// Jumps to the newest columns every time, also when only the size changed.
void CQBudgetHistoryWidget::UpdateScrollBar()
{
	m_nScrolledColumns = VisibleColumns();
	const HistoryScrollRange range =
		HistoryScrollRange::Make( m_Owner.GetViewData().m_nSampleCount, m_nScrolledColumns, m_bCursorMode );
	m_nScrollBase = range.m_nBase;
	m_pScrollBar->setVisible( range.m_bShown );
	m_pScrollBar->setSingleStep( 1 );
	m_pScrollBar->setRange( 0, range.m_nMaximum );
	m_pScrollBar->setPageStep( m_nScrolledColumns );
	m_pScrollBar->setValue( range.m_nMaximum );
}

void CQBudgetHistoryWidget::UpdateCursorLabel()
{
	if ( !m_pCursorLabel )
		return;
	const qulonglong nNumber = m_Owner.GetViewData().m_nSampleCount > 0 ? qulonglong{ m_nCursor } + 1 : 1;
	m_pCursorLabel->setText( tr( " Cursor: %1 " ).arg( nNumber, 0, 10, QLatin1Char( ' ' ) ) );
}

void CQBudgetHistoryWidget::OnValueChanged()
{
	UpdateCursorLabel();
	m_Owner.OnHistoryCursorChanged();
}

void CQBudgetHistoryWidget::OnViewResized()
{
	if ( VisibleColumns() != m_nScrolledColumns )
		UpdateScrollBar();
}

void CQBudgetHistoryWidget::resizeEvent( QResizeEvent *pEvent )
{
	QWidget::resizeEvent( pEvent );
	UpdateScrollBar();
}

void CQBudgetHistoryWidget::PressColumn( int x )
{
	if ( !m_bCursorMode || m_Owner.GetViewData().m_nSampleCount == 0 )
		return;
	Pick( x );
	m_bDragging = true;
}

void CQBudgetHistoryWidget::DragColumn( int x )
{
	if ( m_bDragging )
		Pick( x );
}

void CQBudgetHistoryWidget::ReleaseColumn()
{
	m_bDragging = false;
}

void CQBudgetHistoryWidget::Pick( int x )
{
	MoveCursor( Columns().Pick( x ) );
}

void CQBudgetHistoryWidget::MoveCursor( uint32_t nSample )
{
	if ( nSample == m_nCursor )
		return;
	m_nCursor = nSample;
	OnValueChanged();
}

bool CQBudgetHistoryWidget::ScrollToCursor( bool bCentre )
{
	if ( m_pScrollBar->isHidden() )
		return false;
	const int64_t nFirst = int64_t{ m_nScrollBase } + m_pScrollBar->value();
	const int64_t nLowest = int64_t{ m_nCursor } - std::max( 0, m_nScrolledColumns - 1 );
	int64_t nWanted = std::clamp<int64_t>( nFirst, nLowest, m_nCursor );
	if ( bCentre && nWanted != nFirst )
		nWanted = ( nLowest + m_nCursor ) / 2;
	nWanted -= m_nScrollBase;
	const int nValue = static_cast<int>( std::clamp<int64_t>( nWanted, 0, m_pScrollBar->maximum() ) );
	const bool bScrolls = nValue != m_pScrollBar->value();
	m_pScrollBar->setValue( nValue );
	return bScrolls;
}

void CQBudgetHistoryWidget::keyPressEvent( QKeyEvent *pEvent )
{
	if ( !HandleKey( *pEvent ) )
		QWidget::keyPressEvent( pEvent );
}

bool CQBudgetHistoryWidget::HandleKey( const QKeyEvent &event )
{
	const std::optional<HistoryCommand> command = HistoryCommandOfKey( event.key(), event.modifiers() );
	if ( !command )
		return false;
	if ( command->m_Kind == HistoryCommand::Kind::ToggleSampling )
	{
		if ( !event.isAutoRepeat() )
			m_Owner.ToggleSampling();
		return true;
	}
	if ( !m_bCursorMode )
		return false;
	RunCommand( *command );
	return true;
}

std::optional<uint32_t> CQBudgetHistoryWidget::TargetOf( const HistoryCommand &command ) const
{
	const BudgetViewData viewData = m_Owner.GetViewData();
	const std::optional<HeldSamples> held = HeldSamples::Of( viewData.m_nSampleCount );
	if ( !held )
		return std::nullopt;
	const float flSlow = m_pGraph->Markers().m_flLower;
	switch ( command.m_Kind )
	{
		case HistoryCommand::Kind::Step:
			return StepSample( *held, m_nCursor, command.m_nSteps );
		case HistoryCommand::Kind::StepScreen:
			return StepSample( *held, m_nCursor, int64_t{ command.m_nSteps } * std::max( 1, VisibleColumns() ) );
		case HistoryCommand::Kind::Oldest:
			return held->m_nOldest;
		case HistoryCommand::Kind::Newest:
			return held->m_nNewest;
		case HistoryCommand::Kind::NextSlow:
			return FindSlowerSample( viewData, m_nCursor, SearchDirection::Later, flSlow );
		case HistoryCommand::Kind::PreviousSlow:
			return FindSlowerSample( viewData, m_nCursor, SearchDirection::Earlier, flSlow );
		case HistoryCommand::Kind::Slowest:
			return FindSlowestSample( viewData );
		case HistoryCommand::Kind::ToggleSampling:
			break;
	}
	return std::nullopt;
}

void CQBudgetHistoryWidget::RunCommand( const HistoryCommand &command )
{
	const std::optional<uint32_t> target = TargetOf( command );
	if ( !target )
		return;
	const bool bMoved = *target != m_nCursor;
	m_nCursor = *target;
	// A step keeps the surroundings in place; what was searched for is shown with the frames around it. Scrolling
	// refreshes by itself.
	const bool bSearched = command.m_Kind == HistoryCommand::Kind::NextSlow ||
						   command.m_Kind == HistoryCommand::Kind::PreviousSlow ||
						   command.m_Kind == HistoryCommand::Kind::Slowest;
	if ( !ScrollToCursor( bSearched ) && bMoved )
		OnValueChanged();
}

void CQBudgetHistoryWidget::ShowToolTip( QWidget &view, const QHelpEvent &event )
{
	const HistoryColumns columns = Columns();
	const std::optional<uint32_t> sample = columns.SampleUnder( event.x() );
	if ( !sample )
	{
		QToolTip::showText( event.globalPos(), HistoryKeysText(), &view );
		return;
	}
	const int nPitch = m_Measures.Pitch();
	const QRect column( event.x() / nPitch * nPitch, 0, nPitch, view.height() );
	QToolTip::showText(
		event.globalPos(), SampleDescription::Of( m_Owner.GetViewData(), *sample ).ToHtml(), &view, column );
}
