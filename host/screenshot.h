// A picture of a window, some time after a connection came up.
#pragma once

#include <QObject>
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
	CScreenshot(
		const QString &file, double flAfter, std::function<QWidget *()> findWindow, QObject *pParent = nullptr );

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
	std::function<QWidget *()> m_FindWindow;
	QTimer m_Patience;
	QTimer m_After;
	bool m_bBegun = false;
};
