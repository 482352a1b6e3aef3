#include <cassert>

#include "daemon/EditorDocumentDaemon.h"

EditorDocumentDaemon::Handler EditorDocumentDaemon::handlerForCommand(EditorDocumentRequestCommand command) {
    using Command = EditorDocumentRequestCommand;
    using Daemon = EditorDocumentDaemon;
    switch (command) {
        case Command::open:
            return &Daemon::handleOpen;
        case Command::save:
            return &Daemon::handleSave;
        case Command::close:
            return &Daemon::handleClose;
        case Command::openWorkspace:
            return &Daemon::handleOpenWorkspace;
        case Command::closeWorkspace:
            return &Daemon::handleCloseWorkspace;
        case Command::loadWorkspaceChildren:
            return &Daemon::handleLoadWorkspaceChildren;
        case Command::createWorkspaceFile:
            return &Daemon::handleCreateWorkspaceFile;
        case Command::createWorkspaceFolder:
            return &Daemon::handleCreateWorkspaceFolder;
        case Command::renameWorkspaceItem:
            return &Daemon::handleRenameWorkspaceItem;
        case Command::moveWorkspaceItem:
            return &Daemon::handleMoveWorkspaceItem;
        case Command::copyWorkspaceItem:
            return &Daemon::handleCopyWorkspaceItem;
        case Command::duplicateWorkspaceItem:
            return &Daemon::handleDuplicateWorkspaceItem;
        case Command::trashWorkspaceItem:
            return &Daemon::handleTrashWorkspaceItem;
        case Command::deleteWorkspaceItem:
            return &Daemon::handleDeleteWorkspaceItem;
    }
    assert(false);
    return nullptr;
}
