#include "showbudget/budgetstatusbar.h"

#include <QFontMetrics>
#include <QFrame>
#include <QLabel>
#include <QStatusBar>

namespace
{
QLabel *AddPanelLabel( QStatusBar &statusBar )
{
	auto *pLabel = new QLabel( &statusBar );
	pLabel->setFrameShape( QFrame::Panel );
	pLabel->setFrameShadow( QFrame::Sunken );
	statusBar.addPermanentWidget( pLabel );
	return pLabel;
}

// A label whose neighbours stay in place while its numbers change.
QLabel *AddFixedLabel( QStatusBar &statusBar, const QString &widestText )
{
	auto *pLabel = new QLabel( widestText, &statusBar );
	pLabel->setFixedSize( pLabel->fontMetrics().horizontalAdvance( widestText ), pLabel->sizeHint().height() );
	statusBar.addPermanentWidget( pLabel );
	return pLabel;
}

// A label tells its layout of every text unless its size is fixed, and then the whole window is laid out and painted.
void SetTextUnpainted( QLabel &label, const QString &text )
{
	if ( label.text() == text )
		return;
	label.setAttribute( Qt::WA_UpdatesDisabled ); // not setUpdatesEnabled, which repaints when it goes back on
	label.setText( text );
	label.setAttribute( Qt::WA_UpdatesDisabled, false );
}

// Never smaller than it was: digits of different widths do not move its neighbours.
void Grow( QLabel &label )
{
	const QSize wanted = label.sizeHint().expandedTo( label.minimumSize() );
	if ( wanted != label.minimumSize() )
		label.setFixedSize( wanted );
}
} // namespace

CBudgetStatusBar::CBudgetStatusBar( QStatusBar &statusBar )
	: m_StatusBar( statusBar )
	, m_pState( AddPanelLabel( statusBar ) )
	, m_pSamples( AddPanelLabel( statusBar ) )
	, m_pFPS( AddFixedLabel( statusBar, QStringLiteral( " FPS: 888.88 " ) ) )
	, m_pFrame( AddFixedLabel( statusBar, QStringLiteral( " Frame: 888.88 " ) ) )
	, m_nCursorPosition( 2 ) // behind state and samples
{
}

void CBudgetStatusBar::SetState( const QString &text )
{
	m_pState->setText( text );
}

void CBudgetStatusBar::SetTexts( const BudgetStatusTexts &texts )
{
	SetTextUnpainted( *m_pSamples, texts.m_Samples );
	Grow( *m_pSamples );
	SetTextUnpainted( *m_pFPS, texts.m_FPS );
	SetTextUnpainted( *m_pFrame, texts.m_Frame );
}

void CBudgetStatusBar::AddCursorLabel( QWidget *pLabel )
{
	m_nCursorPosition = m_StatusBar.insertPermanentWidget( m_nCursorPosition, pLabel );
}
