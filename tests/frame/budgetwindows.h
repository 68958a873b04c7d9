// Which Show Budget windows there are, whoever made them.
#pragma once

#include <QApplication>
#include <QWidget>
#include <cstring>
#include <vector>

inline std::vector<QWidget *> BudgetWindows()
{
	std::vector<QWidget *> windows;
	for ( QWidget *pWidget : QApplication::topLevelWidgets() )
	{
		if ( std::strcmp( pWidget->metaObject()->className(), "CQBudgetWidget" ) == 0 )
			windows.push_back( pWidget );
	}
	return windows;
}
