// A picture of a window, some time after a connection came up.
#pragma once

#include <QObject>
#include <QSize>
#include <QString>
#include <QTimer>

#include <functional>

class QWidget;

class CScreenshot final : public QObject
{
	Q_OBJECT

public:
	static constexpr int CONNECT_PATIENCE_MS = 30000;

	// findWindow gives the window of the picture when its time has come; null when there is none.
	// It gets the given size as soon as the connection is up, so that the picture does not depend on the screen.
	CScreenshot( const QString &file, double flAfter, const QSize &size, std::function<QWidget *()> findWindow,
		QObject *pParent = nullptr );

	// Waits for Begin; nConnectPatienceMs later it gives up.
	void Wait( int nConnectPatienceMs = CONNECT_PATIENCE_MS );

	// The connection is up: the time counts from now. Later calls change nothing.
	void Begin();

	bool HasBegun() const { return m_bBegun; }

signals:
	void Written( const QString &file );
	void Failed( const QString &reason ); // one line

private:
	void Take();

	QString m_File;
	QSize m_Size;
	std::function<QWidget *()> m_FindWindow;
	QTimer m_Patience;
	QTimer m_After;
	bool m_bBegun = false;
};
