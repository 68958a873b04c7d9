// The mini-profiler panel of the Show Budget window.
#pragma once

#include <QColor>
#include <QHash>
#include <QString>
#include <QWidget>

// Holds what belongs to the panel already: the colours of the budgets and whether collection is paused. It says plainly
// that no scopes are kept.
class CQMiniProfilerWidget final : public QWidget
{
	Q_OBJECT

public:
	explicit CQMiniProfilerWidget( QWidget *pParent );

	// Forgets everything that was recorded; the colours and the pause state stay.
	void Clear();

	// A budget of that name already there gets the new colour.
	void SetBudgetColour( const QString &name, const QColor &colour );
	QColor BudgetColour( const QString &name ) const; // an invalid colour for an unknown name

	bool IsPaused() const { return m_bPaused; }

public slots:
	void SetPaused( bool bPaused );

signals:
	void OnPauseStateChanged( bool bPaused );

private:
	QHash<QString, QColor> m_BudgetColours;
	bool m_bPaused = false;
};
