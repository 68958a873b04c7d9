#include "endtoend/budgetwindow.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>

#include <cstring>

QMainWindow *FindBudgetWindow()
{
	for ( QWidget *pWidget : QApplication::topLevelWidgets() )
	{
		if ( std::strcmp( pWidget->metaObject()->className(), "CQBudgetWidget" ) == 0 )
			return qobject_cast<QMainWindow *>( pWidget );
	}
	return nullptr;
}

QString BudgetWindowStatus( const QString &prefix )
{
	const QMainWindow *pWindow = FindBudgetWindow();
	if ( !pWindow )
		return {};
	for ( const QLabel *pLabel : pWindow->statusBar()->findChildren<QLabel *>() )
	{
		if ( pLabel->text().trimmed().startsWith( prefix ) )
			return pLabel->text().trimmed();
	}
	return {};
}

int BudgetWindowSamples()
{
	return BudgetWindowStatus( QStringLiteral( "Samples:" ) ).section( ' ', 1 ).toInt();
}
