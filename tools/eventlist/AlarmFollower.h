#pragma once

#include "eventlist/AlarmPrinter.h"
#include "eventlist/Follower.h"
#include "eventlist/ListReply.h"

#include <QSharedPointer>

#include <optional>

class AlarmlistHandlerDBusConnectorRead;

/// Prints the alarm list and the state of the central detector, then their changes as they come.
class AlarmFollower : public Follower
{
    Q_OBJECT
public:
    AlarmFollower(const QSharedPointer<AlarmlistHandlerDBusConnectorRead>& connector,
                  const QString& language, bool isJson);

protected:
    DBusPendingReply::SharedPointer ask() override;
    bool take(const ListReply& list) override;
    void serviceIsBack() override;

private:
    void printDifferences(const ListReply& now);
    void askState();
    void takeState();
    void tellCentralDetector(bool isOn);

    const QSharedPointer<AlarmlistHandlerDBusConnectorRead> m_connector;
    const QString m_language;
    const bool m_isJson;
    AlarmPrinter m_printer;
    bool m_hasList = false;
    ListReply m_list;
    DBusPendingReply::SharedPointer m_stateReply;
    bool m_isStateWanted = true;
    std::optional<bool> m_isCentralDetectorOn; ///< as it was printed last
};
