#include "unattendedboxes.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPointer>

CUnattendedBoxes::CUnattendedBoxes( std::function<void( const QString &line )> tell )
	: m_Tell( std::move( tell ) )
{
	QCoreApplication::instance()->installEventFilter( this );
}

bool CUnattendedBoxes::eventFilter( QObject *pWatched, QEvent *pEvent )
{
	if ( pEvent->type() == QEvent::Show )
		if ( auto *pBox = qobject_cast<QMessageBox *>( pWatched ) )
		{
			// Later, when the box waits for its answer.
			const auto answer = [this, pAlive = QPointer<QMessageBox>( pBox )]()
			{
				if ( pAlive )
					Answer( *pAlive );
			};
			QMetaObject::invokeMethod( this, answer, Qt::QueuedConnection );
		}
	return QObject::eventFilter( pWatched, pEvent );
}

void CUnattendedBoxes::Answer( QMessageBox &box )
{
	QString text = box.text().trimmed();
	text.replace( '\n', QStringLiteral( "; " ) );
	const QString title = box.windowTitle();
	m_Tell( title + QLatin1String( title.endsWith( '?' ) ? " " : ": " ) + text );
	if ( QAbstractButton *pGoOn = box.button( QMessageBox::Ok ) )
		pGoOn->click();
	else
		box.reject();
}
