// The context menu of the mini-profiler: how rows look, and what can be done with them.
#pragma once

#include <QMenu>

class CQMiniProfilerBarDelegate;
class QAction;
class QActionGroup;

class CQMiniProfilerMenu final : public QMenu
{
	Q_OBJECT

public:
	// The entries that change how cells look are connected to the delegate, which outlives the menu; the others signal.
	CQMiniProfilerMenu( CQMiniProfilerBarDelegate &delegate, QWidget *pParent );

	// Renames the two entries of bars per interval: "Bar: Inclusive, per frame".
	void SetInterval( const QString &interval );

	bool IsNormalising() const;

signals:
	void NormaliseToggled();
	void SortToggled( bool bOn );
	void CopyAddressTriggered();
	void ClearSelectionTriggered();
	void DisambiguateTriggered();

private:
	QAction *AddEntry( const QString &text, const QObject *pReceiver, const char *pSlot );
	QAction *AddToggle( const QString &text, bool bOn, const QObject *pReceiver, const char *pSlot );
	void AddBarEntries();
	void AddAlignmentEntries();
	void AddDrawEntries();

	CQMiniProfilerBarDelegate &m_Delegate;
	QAction *m_pExclusiveBars = nullptr;
	QAction *m_pInclusiveBars = nullptr;
	QAction *m_pNormalise = nullptr;
};
