#include "miniprofiler/miniprofilersearchedit.h"

#include <QKeyEvent>

CQMiniProfilerSearchEdit::CQMiniProfilerSearchEdit( QWidget *pParent )
	: QLineEdit( pParent )
{
	setPlaceholderText( tr( "Search (Ctrl+F)" ) );
}

void CQMiniProfilerSearchEdit::keyPressEvent( QKeyEvent *pEvent )
{
	switch ( pEvent->key() )
	{
		case Qt::Key_Return:
		case Qt::Key_Enter:
			emit StepRequested( !( pEvent->modifiers() & Qt::ShiftModifier ) );
			break;
		case Qt::Key_Escape:
			clear();
			emit textEdited( QString() );
			break;
		default:
			QLineEdit::keyPressEvent( pEvent );
			return;
	}
	pEvent->accept();
}
