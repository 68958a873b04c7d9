// The panel of connections: address bar, list, what to do with the selected one.
#pragma once

#include <QWidget>

#include "connectionsmodel.h"
#include "targetaddress.h"

class CConnectionList;
class QComboBox;
class QLabel;
class QModelIndex;
class QPushButton;
class QTreeView;

class CQConnectionsPanel final : public QWidget
{
	Q_OBJECT

public:
	static constexpr int MAX_RECENT = 10;

	// list must outlive the panel.
	explicit CQConnectionsPanel( CConnectionList &list, QWidget *pParent = nullptr );

	// The addresses of the drop-down list, the newest first; at most MAX_RECENT are kept. The newest one then stands in
	// the address bar.
	void SetRecentAddresses( const QStringList &addresses );
	QStringList RecentAddresses() const;
	void AddRecentAddress( const TargetAddress &address );

signals:
	// The user asks for a connection to a well-formed address.
	void ConnectRequested( const TargetAddress &address );

public slots:
	void OnFocusAddress();

private slots:
	void OnConnectClicked();
	void OnToggleClicked();
	void OnRemoveClicked();
	void OnCurrentRowChanged( const QModelIndex &index );
	void OnUpdate();

private:
	QWidget *MakeAddressBar();
	QWidget *MakeList();
	QWidget *MakeButtons();
	void MakeHint();
	void ShowError( const QString &error );

	CConnectionList &m_List;
	CConnectionsModel m_Model;
	QComboBox *m_pAddressBox = nullptr;
	QLabel *m_pError = nullptr;
	QTreeView *m_pView = nullptr;
	QLabel *m_pHint = nullptr; // in the place of the list's first lines, while there are none
	QPushButton *m_pToggle = nullptr;
	QPushButton *m_pRemove = nullptr;
};
