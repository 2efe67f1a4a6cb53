// The folders of a store with their state, as a window that follows whatever program writes to the store:
//     qml examples/qml/folders.qml -- <store>
import QtQuick 2.15
import QtQuick.Window 2.15
import QtQml.Models 2.15
import Tandry 1.0

Window {
    id: window

    property string storePath: Qt.application.arguments[Qt.application.arguments.length - 1]

    width: 640
    height: 400
    visible: true
    title: records.isOpen ? records.path : records.error

    Store {
        id: records
        path: window.storePath
    }

    // A click on a folder opens its branch.
    DelegateModel {
        id: branch
        model: FolderTreeModel { store: records }
        delegate: Text {
            required property int index
            required property var model

            width: ListView.view.width
            padding: 6
            text: model.display + " – " + model.syncStatusText
            color: model.syncStatus === Tandry.FolderStatusOutOfSync ? "firebrick" : "black"

            MouseArea {
                anchors.fill: parent
                onClicked: {
                    const clicked = branch.modelIndex(index)
                    branch.model.fetchMore(clicked) // before it is the root: Qt 5 would count its rows twice
                    branch.rootIndex = clicked
                }
            }
        }
    }

    Text {
        id: up
        padding: 6
        text: "↑"
        opacity: branch.rootIndex.valid ? 1 : 0.3

        MouseArea {
            anchors.fill: parent
            onClicked: branch.rootIndex = branch.parentModelIndex()
        }
    }

    ListView {
        objectName: "folders"
        anchors { top: up.bottom; left: parent.left; right: parent.right; bottom: parent.bottom }
        clip: true
        model: branch
    }
}
