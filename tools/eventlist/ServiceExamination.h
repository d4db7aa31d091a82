#pragma once

class Diagnosis;

/// Looks at the bus and at the central service on it.
class ServiceExamination
{
public:
    explicit ServiceExamination(Diagnosis& diagnosis) : m_diagnosis(diagnosis) {}

    /// \returns false when the bus or the service is not there
    bool run();

    /// True when the service answers at all.
    bool isAnswering() const { return m_isAnswering; }

private:
    bool examineBus();
    bool examineOwner();
    bool examineAnswer();
    void examineInterfaces();
    void examineLists();

    Diagnosis& m_diagnosis;
    bool m_isAnswering = false;
};
