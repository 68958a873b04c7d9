// A host that ends its application object, and then the sub-tool, with a window open and without shutting anything
// down. Ends with status 0 when the window went with the application.
#include <QApplication>
#include <QPointer>

#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "showbudget/budgetwidget.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

int main( int nArguments, char **ppArguments )
{
	CFakeConnection connection;
	CFakeHost host( &connection );
	CSchemaRegistry registry;
	CModuleFrame frame( CServiceConnections( {} ), registry );
	CShowBudgetTool tool( frame );
	QPointer<CQBudgetWidget> pWindow;
	bool bOpened = false;
	{
		QApplication application( nArguments, ppArguments );
		tool.Initialise();
		tool.SetHost( &host, nullptr );
		bOpened = tool.Open();
		pWindow = tool.FindWindow( &connection );
	}
	return bOpened && pWindow.isNull() ? 0 : 1;
}
