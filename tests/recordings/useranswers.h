// A user who closes whatever waits for an answer.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>

// Chooses the last entry of a menu that can be chosen; without one it closes the menu.
inline void AnswerMenu( QMenu &menu )
{
	for ( QAction *pAction : menu.actions() )
		if ( pAction->isEnabled() && !pAction->isSeparator() )
			menu.setActiveAction( pAction );
	QKeyEvent press( QEvent::KeyPress, menu.activeAction() ? Qt::Key_Return : Qt::Key_Escape, Qt::NoModifier );
	QCoreApplication::sendEvent( &menu, &press );
}

// Takes what the message box has recovered, chooses the file in the file dialog, and an entry of a menu. Nothing when
// nothing waits.
inline void AnswerWhatWaits( const QString &path )
{
	if ( auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() ) )
		AnswerMenu( *pMenu );
	else if ( auto *pBox = qobject_cast<QMessageBox *>( QApplication::activeModalWidget() ) )
	{
		QAbstractButton *pOk = pBox->button( QMessageBox::Ok );
		( pOk ? pOk : pBox->button( QMessageBox::Cancel ) )->click();
	}
	else if ( auto *pDialog = qobject_cast<QFileDialog *>( QApplication::activeModalWidget() ) )
	{
		pDialog->findChild<QLineEdit *>( QStringLiteral( "fileNameEdit" ) )->setText( path );
		static_cast<QDialog *>( pDialog )->done( QDialog::Accepted );
	}
}
