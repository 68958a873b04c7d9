// The console: lines, filter, command line.
#pragma once

#include <QWidget>

#include "commandhistory.h"
#include "consolemodel.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTreeView;

class CQConsolePanel final : public QWidget
{
	Q_OBJECT

public:
	// model must outlive the panel.
	explicit CQConsolePanel( CConsoleModel &model, QWidget *pParent = nullptr );

	// Whom the command line speaks to; without a name it is disabled.
	void SetCommandTarget( const QString &name );

	// The selected lines, or all that are shown when none is selected, one to a line.
	QString SelectedText() const;

signals:
	// The user entered a command line; it is not empty.
	void CommandEntered( const QString &command );

public slots:
	void OnCopy();
	void OnClear();

protected:
	bool eventFilter( QObject *pWatched, QEvent *pEvent ) override;
	void changeEvent( QEvent *pEvent ) override;

private slots:
	void OnFilterChanged();
	void OnCommandReturn();
	void OnAboutToInsert();
	void OnInserted();
	void OnContextMenu( const QPoint &ptLocal );

private:
	QWidget *MakeFilterRow();
	QWidget *MakeLines();
	QWidget *MakeCommandRow();
	void UpdateFonts();

	CConsoleModel &m_Model;
	CConsoleFilter m_Filter;
	CCommandHistory m_History;
	QLineEdit *m_pFilterEdit = nullptr;
	QComboBox *m_pSeverityBox = nullptr;
	QTreeView *m_pLines = nullptr;
	QLabel *m_pPrompt = nullptr;
	QLineEdit *m_pCommandEdit = nullptr;
	bool m_bFollowsEnd = true;
};
