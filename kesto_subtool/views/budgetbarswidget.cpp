#include "views/budgetbarswidget.h"

#include <QHBoxLayout>
#include <QScrollBar>
#include <algorithm>

#include "keel0/keyvalues.h"
#include "views/budgetbarspainter.h"
#include "views/budgetsampleswidget.h"
#include "views/budgetscale.h"
#include "views/budgetstatisticspainter.h"
#include "views/viewpainter.h"

CQBudgetBarsWidget::CQBudgetBarsWidget( IBudgetViewOwner &owner, CQBudgetSamplesWidget &strip )
	: QWidget( &strip )
	, m_Owner( owner )
	, m_Strip( strip )
	, m_nCaptionWidth( MeasureBudgetCaption( owner.GetViewStyle().m_CaptionFont ) )
	, m_pLayout( new QHBoxLayout( this ) )
	, m_pScrollBar( new QScrollBar( Qt::Vertical ) )
{
	if ( const KeyValues *pSettings = owner.GetViewSettings() )
		m_nZoomStep = std::clamp( pSettings->GetInt( "samples_scale" ), BUDGET_BARS_MIN_ZOOM, BUDGET_BARS_MAX_ZOOM );
	setMinimumSize( 100, 100 );
	setFocusPolicy( Qt::StrongFocus ); // for the keys of the window

	m_pLayout->setContentsMargins( 0, 0, 0, 0 );
	m_pLayout->addStretch();
	m_pLayout->addWidget( m_pScrollBar );
	m_pScrollBar->hide();
	connect( m_pScrollBar, SIGNAL( valueChanged( int ) ), this, SLOT( OnValueChanged() ) );
	strip.SetScrollBar( m_pScrollBar );
}

bool CQBudgetBarsWidget::SetZoomStep( int nStep )
{
	if ( nStep == m_nZoomStep || nStep < BUDGET_BARS_MIN_ZOOM || nStep > BUDGET_BARS_MAX_ZOOM )
		return false;
	m_nZoomStep = nStep;
	return true;
}

void CQBudgetBarsWidget::paintEvent( QPaintEvent * )
{
	const BudgetViewData samples = m_Owner.GetViewData();
	const BudgetViewStyle &style = m_Owner.GetViewStyle();
	const BudgetBarsView view = View();
	QPainter painter( this );
	CViewPainter viewPainter( painter, m_Stamps );
	PaintBudgetAxis( viewPainter, LayoutBudgetAxis( samples, style, view ), style );
	PaintBudgetBars( viewPainter, LayoutBudgetBars( samples, style, view ), style );
	PaintBudgetStatistics( viewPainter, LayoutBudgetStatistics( samples, style, view ), style );
}

void CQBudgetBarsWidget::resizeEvent( QResizeEvent *pEvent )
{
	QWidget::resizeEvent( pEvent );
	const int nVisible = VisibleBudgetRows( height(), m_Owner.GetViewStyle().m_nRowHeight );
	const int nCount = static_cast<int>( m_Owner.GetViewData().m_Categories.size() );
	if ( nCount == 0 || nVisible >= nCount )
	{
		m_pScrollBar->hide();
		return;
	}
	m_pScrollBar->show();
	m_pScrollBar->setRange( 0, nCount - nVisible );
	m_pScrollBar->setPageStep( nVisible );
	m_pLayout->activate(); // the next repaint needs the bar's width
}

void CQBudgetBarsWidget::OnValueChanged()
{
	m_Strip.update();
}

BudgetBarsView CQBudgetBarsWidget::View() const
{
	BudgetBarsView view;
	view.m_Size = size();
	view.m_nScrollBarWidth = m_pScrollBar->isHidden() ? 0 : m_pScrollBar->width();
	view.m_nFirstRow = m_Strip.FirstRow();
	view.m_nZoomStep = m_nZoomStep;
	view.m_nCaptionWidth = m_nCaptionWidth;
	return view;
}
