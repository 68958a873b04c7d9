// Message boxes of a program that nobody sits at.
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QMessageBox;

// Answers every message box that is shown while this lives, and tells what it said: with "OK" where it offers that, as
// to go on with what is left of a damaged recording, else by cancelling. User-interface thread.
class CUnattendedBoxes final : public QObject
{
	Q_OBJECT

public:
	// tell gets one line for each box.
	explicit CUnattendedBoxes( std::function<void( const QString &line )> tell );

	bool eventFilter( QObject *pWatched, QEvent *pEvent ) override;

private:
	void Answer( QMessageBox &box );

	std::function<void( const QString &line )> m_Tell;
};
