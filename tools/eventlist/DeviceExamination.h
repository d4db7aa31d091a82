#pragma once

#include <QString>

class Diagnosis;

/// Looks at what events need besides the bus: the spool folder, the texts and the time.
class DeviceExamination
{
public:
    explicit DeviceExamination(Diagnosis& diagnosis) : m_diagnosis(diagnosis) {}

    /// \param isServiceThere  whether somebody should have taken what lies there
    void examineSpool(const QString& folder, bool isServiceThere);

    /// \param folder  compiled language files
    void examineTexts(const QString& folder);

    void examineTime();

private:
    void examineRights(const QString& folder);
    void examineSpace(const QString& folder);
    void examineSpoolFiles(const QString& folder, bool isServiceThere);

    Diagnosis& m_diagnosis;
};
