// Loses a block once its application has started, which the leak checker must report.
#include <QApplication>

#include <cstdlib>

void *volatile g_pBlock = nullptr;

int main( int nArguments, char **ppArguments )
{
	QApplication application( nArguments, ppArguments );
	g_pBlock = std::malloc( 100 );
	g_pBlock = nullptr;
	return 0;
}
