#include "showbudget/budgetdock.h"

#include <QAbstractButton>
#include <QEvent>
#include <QIcon>
#include <QStyle>
#include <QVariant>

// The style keeps them: they are its pictures, and go with it.
static void ShareIcons( QStyle &style, const QList<QAbstractButton *> &buttons )
{
	for ( QAbstractButton *pButton : buttons )
	{
		const QByteArray property = "showBudgetIcon_" + pButton->objectName().toLatin1();
		const QVariant shared = style.property( property );
		if ( shared.isValid() )
			pButton->setIcon( shared.value<QIcon>() );
		else
			style.setProperty( property, pButton->icon() );
	}
}

bool CQBudgetDock::event( QEvent *pEvent )
{
	const bool bHandled = QDockWidget::event( pEvent );
	if ( pEvent->type() == QEvent::Show ) // whatever has replaced them before, it is before they are painted
		ShareIcons( *style(), findChildren<QAbstractButton *>( QString(), Qt::FindDirectChildrenOnly ) );
	return bHandled;
}
