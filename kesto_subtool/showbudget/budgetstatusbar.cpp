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
	auto *pLabel = new QLabel( &statusBar );
	pLabel->setFixedWidth( pLabel->fontMetrics().horizontalAdvance( widestText ) );
	statusBar.addPermanentWidget( pLabel );
	return pLabel;
}

void SetTextIfChanged( QLabel &label, const QString &text )
{
	if ( label.text() != text )
		label.setText( text );
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
	SetTextIfChanged( *m_pSamples, texts.m_Samples );
	SetTextIfChanged( *m_pFPS, texts.m_FPS );
	SetTextIfChanged( *m_pFrame, texts.m_Frame );
}

void CBudgetStatusBar::AddCursorLabel( QWidget *pLabel )
{
	m_nCursorPosition = m_StatusBar.insertPermanentWidget( m_nCursorPosition, pLabel );
}
