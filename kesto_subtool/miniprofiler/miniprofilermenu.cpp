#include "miniprofiler/miniprofilermenu.h"

#include <QActionGroup>

#include "miniprofiler/miniprofilerbardelegate.h"

CQMiniProfilerMenu::CQMiniProfilerMenu( CQMiniProfilerBarDelegate &delegate, QWidget *pParent )
	: QMenu( pParent )
	, m_Delegate( delegate )
{
	AddBarEntries();
	addSection( tr( "Name Alignment" ) );
	AddAlignmentEntries();
	addSection( tr( "Draw" ) );
	AddDrawEntries();
	addSection( tr( "Options" ) );
	AddToggle( tr( "Sort" ), true, this, SIGNAL( SortToggled( bool ) ) );
	addSection( tr( "Tools" ) );
	AddEntry( tr( "Copy Address" ), this, SIGNAL( CopyAddressTriggered() ) );
	AddEntry( tr( "Clear Selection" ), this, SIGNAL( ClearSelectionTriggered() ) );
	AddEntry( tr( "Disambiguate by Caller" ), this, SIGNAL( DisambiguateTriggered() ) );
}

QAction *CQMiniProfilerMenu::AddEntry( const QString &text, const QObject *pReceiver, const char *pSlot )
{
	QAction *pAction = addAction( text );
	connect( pAction, SIGNAL( triggered( bool ) ), pReceiver, pSlot );
	return pAction;
}

QAction *CQMiniProfilerMenu::AddToggle( const QString &text, bool bOn, const QObject *pReceiver, const char *pSlot )
{
	QAction *pAction = addAction( text );
	pAction->setCheckable( true );
	pAction->setChecked( bOn );
	connect( pAction, SIGNAL( toggled( bool ) ), pReceiver, pSlot );
	return pAction;
}

void CQMiniProfilerMenu::AddBarEntries()
{
	auto *pGroup = new QActionGroup( this );
	const auto Add = [&]( const QString &text, const char *pSlot )
	{
		QAction *pAction = AddEntry( text, &m_Delegate, pSlot );
		pAction->setCheckable( true );
		pGroup->addAction( pAction );
		return pAction;
	};
	m_pExclusiveBars = Add( tr( "Bar: Exclusive, per Sampling Interval" ), SLOT( OnBarExcFrame() ) );
	m_pInclusiveBars = Add( tr( "Bar: Inclusive, per Sampling Interval" ), SLOT( OnBarIncFrame() ) );
	m_pInclusiveBars->setChecked( true );
	Add( tr( "Bar: None" ), SLOT( OnBarNone() ) );
	Add( tr( "Bar: Calls" ), SLOT( OnBarCalls() ) );
	Add( tr( "Bar: Exclusive, per Call" ), SLOT( OnBarExcCall() ) );
	Add( tr( "Bar: Inclusive, per Call" ), SLOT( OnBarIncCall() ) );
}

void CQMiniProfilerMenu::AddAlignmentEntries()
{
	auto *pGroup = new QActionGroup( this );
	const auto Add = [&]( const QString &text, const char *pSlot )
	{
		QAction *pAction = AddEntry( text, &m_Delegate, pSlot );
		pAction->setCheckable( true );
		pGroup->addAction( pAction );
		return pAction;
	};
	Add( tr( "Center Align" ), SLOT( OnCenterAlign() ) );
	Add( tr( "Right Align" ), SLOT( OnRightAlign() ) );
	Add( tr( "Left Align" ), SLOT( OnLeftAlign() ) )->setChecked( true );
}

void CQMiniProfilerMenu::AddDrawEntries()
{
	AddToggle( tr( "Name: Transparent" ), m_Delegate.Display().m_bNameTransparent, &m_Delegate,
		SLOT( OnTextTransparent( bool ) ) );
	AddToggle( tr( "Draw Bars" ), true, &m_Delegate, SLOT( OnDrawBars( bool ) ) );
	AddToggle( tr( "Draw Sigmas" ), true, &m_Delegate, SLOT( OnDrawSigma( bool ) ) );
	AddToggle( tr( "Draw Peaks" ), true, &m_Delegate, SLOT( OnDrawPeaks( bool ) ) );
	AddToggle( tr( "Group Colors" ), false, &m_Delegate, SLOT( OnDrawGroupBackgroundColor( bool ) ) );
	m_pNormalise = AddToggle( tr( "Normalize To Selected" ), false, this, SIGNAL( NormaliseToggled() ) );
	AddToggle( tr( "Hide All Text" ), false, &m_Delegate, SLOT( OnHideText( bool ) ) );
}

void CQMiniProfilerMenu::SetInterval( const QString &interval )
{
	m_pExclusiveBars->setText( tr( "Bar: Exclusive, per %1" ).arg( interval ) );
	m_pInclusiveBars->setText( tr( "Bar: Inclusive, per %1" ).arg( interval ) );
}

bool CQMiniProfilerMenu::IsNormalising() const
{
	return m_pNormalise->isChecked();
}
