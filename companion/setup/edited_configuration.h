#pragma once

#include "companion/check/configuration_check.h"
#include "companion/draft/configuration_draft.h"
#include "companion/draft/configuration_files.h"
#include "companion/draft/control_list.h"
#include "companion/live/bridge_configuration.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The configuration that the page edits: its files, the draft with all changes, and what follows from the draft. One
/// thread.
class EditedConfiguration {
public:
    /// Reads the files.
    explicit EditedConfiguration(const std::string& configPath);

    /// Reads the files again and drops all changes.
    void reload();

    /// Why there is nothing to edit; empty if there is.
    const std::string& problem() const { return problemText; }
    const ConfigurationFiles& files() const { return diskFiles; }
    /// Needs no problem, and so do all below.
    const ConfigurationDraft& draft() const { return *edited; }
    const std::vector<ListedControl>& controls() const { return listed; }
    const ConfigurationVerdict& verdict() const { return judged; }

    using Edit = std::function<bool(ConfigurationDraft& draft, std::string& error)>;

    /// Carries out one change. False with the reason in `error`.
    bool change(const Edit& edit, std::string& error);
    bool save(std::string& error);
    /// There is something to save.
    bool isChanged() const;
    /// The user has changes to lose. A new configuration differs from the disk before the user has done anything.
    bool hasUnsavedChanges() const;

    /// What the bridge would make of the draft, as far as it could read it. Never null.
    const std::shared_ptr<const BridgeConfiguration>& forBridge() const { return read; }

private:
    ConfigurationFiles diskFiles;
    std::string problemText;
    std::optional<ConfigurationDraft> edited;
    std::vector<ListedControl> listed;
    ConfigurationVerdict judged;
    std::shared_ptr<const BridgeConfiguration> read = std::make_shared<BridgeConfiguration>();

    void judge();
};
