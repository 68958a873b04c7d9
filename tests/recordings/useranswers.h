// A user who closes whatever waits for an answer.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>

// Takes what the message box has recovered, chooses the file in the file dialog, and the last entry of a menu. Nothing
// when nothing waits.
inline void AnswerWhatWaits( const QString &path )
{
	if ( auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() ) )
	{
		pMenu->setActiveAction( pMenu->actions().last() );
		QKeyEvent press( QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier );
		QCoreApplication::sendEvent( pMenu, &press );
	}
	else if ( auto *pBox = qobject_cast<QMessageBox *>( QApplication::activeModalWidget() ) )
	{
		QAbstractButton *pOk = pBox->button( QMessageBox::Ok );
		( pOk ? pOk : pBox->button( QMessageBox::Cancel ) )->click();
	}
	else if ( auto *pDialog = qobject_cast<QFileDialog *>( QApplication::activeModalWidget() ) )
	{
		pDialog->selectFile( path );
		static_cast<QDialog *>( pDialog )->done( QDialog::Accepted );
	}
}
