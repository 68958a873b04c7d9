#include "miniprofilerpicture.h"

#include <QAction>
#include <QComboBox>
#include <QDockWidget>
#include <QTreeView>

namespace
{
// Sub-tools are modules; what the host knows of their windows is what a user can read there.
QDockWidget *FindDock( const QWidget &window, const QLatin1String &title )
{
	for ( QDockWidget *pDock : window.findChildren<QDockWidget *>() )
		if ( pDock->windowTitle() == title )
			return pDock;
	return nullptr;
}

void Choose( const QWidget &parent, const QString &text )
{
	for ( QComboBox *pComboBox : parent.findChildren<QComboBox *>() )
		if ( const int nIndex = pComboBox->findText( text ); nIndex >= 0 )
			pComboBox->setCurrentIndex( nIndex );
}
} // namespace

QWidget *ArrangeMiniProfiler( QWidget &window )
{
	QDockWidget *pDock = FindDock( window, QLatin1String( "MiniProfiler History" ) );
	if ( !pDock )
		return nullptr;
	if ( !pDock->isVisible() )
		pDock->toggleViewAction()->trigger();
	pDock->setFloating( true );
	Choose( *pDock, QStringLiteral( "Group by Budget" ) );
	for ( QTreeView *pTree : pDock->findChildren<QTreeView *>() )
		pTree->expandAll();
	return pDock;
}
