#ifndef VIGIL_AGENT_APPLICATIONSERVER_H
#define VIGIL_AGENT_APPLICATIONSERVER_H

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>

#include <map>
#include <set>

#include "CellOwners.h"
#include "CellStore.h"

namespace agent {

class ApplicationConnection;

/// Accepts the applications of this host and keeps what they publish in the store.
///
/// Purpose: one ApplicationConnection for each application. When a connection ends, its cells go.
///
/// Threads: the agent has one.
/// Ownership: the store must outlive the server, which owns the connections.
/// Failure: what is wrong with one connection ends that one alone.
class ApplicationServer : public QObject, public CellOwners
{
    Q_OBJECT

public:
    explicit ApplicationServer(CellStore& store);

    /// False when the port cannot be had; errorText() says why.
    bool listen(const QHostAddress& host, quint16 port);
    QString errorText() const { return m_server.errorString(); }

    /// Host and port, as they are now.
    QString address() const;

    void ask(OwnerId owner, int number, const ObjectId& id, const CellValue& value) override;
    void commit(OwnerId owner, const ObjectId& id, const CellValue& value) override;

signals:
    void answered(agent::OwnerId owner, int number, int errorStatus);

    /// The owner's cells have left the store.
    void lost(agent::OwnerId owner);

private:
    void acceptAll();
    void accept(QTcpSocket* socket);
    void storeValue(OwnerId owner, const ObjectId& id, const CellValue& value);
    void unsetTree(OwnerId owner, const ObjectId& tree);
    void remove(OwnerId owner);
    QString nameOf(OwnerId owner) const;
    bool canBeServed(OwnerId owner, const ObjectId& id);

    QTcpServer m_server;
    CellStore& m_store;
    std::map<OwnerId, ApplicationConnection*> m_connections;
    std::set<std::pair<OwnerId, ObjectId>>
        m_refused; // so that each is warned about once, not at every update
    OwnerId m_lastOwner = 0;
};

} // namespace agent

#endif
