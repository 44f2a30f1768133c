#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace VorControl {

class IControlFactory;

/// Describes one service type that a plug-in offers. A null text is an empty one.
class ControlInfo {
public:
    /// Where the service type may run.
    struct SupportedEnvironmentList {
        bool physicalSensor = true;
        bool physicalVorbox = true;
        bool virtualSensor = true;
        bool virtualVorbox = true;
        bool vorsuiteServiceApp = true;
        bool vorsuiteDaemon = true;
    };

    struct IconRecord {
        std::string name;
        std::vector<unsigned char> bytes;
    };

    /// The unique key of the type, and the id of its instance.
    ControlInfo& SetTypeName(const char* text);
    ControlInfo& SetDisplayName(const char* text);
    ControlInfo& SetDescription(const char* text);
    ControlInfo& SetHelpHtml(const char* text);
    ControlInfo& SetHelpUrl(const char* text);
    ControlInfo& SetIcon(const char* name, const std::vector<unsigned char>& bytes);
    /// Fails with yERROR_ALREADY_EXISTS if the category is there.
    ControlInfo& AddCategory(const char* text);
    /// The record doesn't own the factory, which must outlive every copy of the record.
    void SetFactory(IControlFactory& newFactory);
    void SetSupportedEnvironment(const SupportedEnvironmentList& list);

    const std::string& TypeName() const { return typeName; }
    const std::string& DisplayName() const { return displayName; }
    const std::string& Description() const { return description; }
    const std::string& HelpHtml() const { return helpHtml; }
    const std::string& HelpUrl() const { return helpUrl; }
    const IconRecord& Icon() const { return icon; }
    std::size_t CategoryCount() const { return categories.size(); }
    /// Fails with yERROR_PARAMETER at or past the count.
    const std::string& CategoryAt(std::size_t index) const;
    /// Fails with yERROR_STATE while none is set.
    IControlFactory& Factory() const;

    bool SupportedOnPhysicalSensor() const { return environments.physicalSensor; }
    bool SupportedOnPhysicalVorbox() const { return environments.physicalVorbox; }
    bool SupportedOnVirtualSensor() const { return environments.virtualSensor; }
    bool SupportedOnVirtualVorbox() const { return environments.virtualVorbox; }
    bool SupportedOnVorsuiteServiceApp() const { return environments.vorsuiteServiceApp; }
    bool SupportedOnVorsuiteDaemon() const { return environments.vorsuiteDaemon; }

private:
    std::string typeName = "TT-TT-TT!@#$%";
    std::string displayName = "Dun-Dun!@#$%";
    std::string description;
    std::string helpHtml;
    std::string helpUrl;
    IconRecord icon;
    std::vector<std::string> categories;
    IControlFactory* factory = nullptr;
    SupportedEnvironmentList environments;
};

} // namespace VorControl
