import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// One tab's navigation stack: a bar with the back button, the title and the top screen's
// buttons, over a StackView that follows the stack model.
Item {
    id: navigation
    required property TPNavigationStack stack

    Rectangle {
        id: bar
        z: 1
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: Theme.barHeight
        color: Theme.barBackground

        BarButton {
            id: backButton
            objectName: "backButton"
            visible: navigation.stack.depth > 1
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            glyph: "‹"
            // The previous screen's title beside the chevron, as long as the title still fits.
            label: titleLabel.implicitWidth + 2 * Math.max(widthWithLabel, trailing.width) + 16 <= bar.width
                   ? navigation.stack.backTitle : ""
            // The width the button takes with the previous title shown. Measured here, not
            // in every bar button: the list's rows have bar buttons too.
            readonly property real widthWithLabel: backGlyph.advanceWidth + backLabel.advanceWidth + 20
            TextMetrics {
                id: backGlyph
                font.pixelSize: 26
                text: backButton.glyph
            }
            TextMetrics {
                id: backLabel
                font.pixelSize: 17
                text: navigation.stack.backTitle
            }
            text: navigation.stack.backTitle
            onClicked: navigation.stack.popViewController()
        }
        // The title, centred on the bar where it fits, otherwise in the room between the
        // buttons on either side; a name too long even for that loses its middle. The
        // unsaved dot keeps its own room beside it.
        Text {
            id: titleLabel
            objectName: "navigationTitle"
            readonly property real markRoom: 16
            readonly property real leftEdge: Math.max(backButton.visible ? backButton.width : 0,
                                                      leading.width + 4) + 8
            readonly property real rightEdge: bar.width - trailing.width - 12 - markRoom
            anchors.verticalCenter: parent.verticalCenter
            width: Math.max(0, Math.min(implicitWidth, rightEdge - leftEdge))
            x: Math.max(leftEdge, Math.min((bar.width - width) / 2, rightEdge - width))
            elide: Text.ElideMiddle
            horizontalAlignment: Text.AlignHCenter
            text: navigation.stack.topViewController ? navigation.stack.topViewController.title : ""
            font.pixelSize: 17
            font.weight: Font.DemiBold
            color: Theme.label
            Accessible.name: text

            Rectangle {
                objectName: "unsavedMark"
                visible: navigation.stack.topViewController !== null
                         && navigation.stack.topViewController.unsavedChanges
                anchors { left: parent.right; leftMargin: 5; verticalCenter: parent.verticalCenter }
                width: 7
                height: 7
                radius: 3.5
                color: Theme.tint
            }
        }
        Loader {
            id: leading
            anchors { left: parent.left; leftMargin: 4; verticalCenter: parent.verticalCenter }
            // A page's own buttons on the left, where no back button is.
            width: item ? (item as Item).implicitWidth : 0
            sourceComponent: pages.currentPage && !backButton.visible ? pages.currentPage.leadingBarItems : null
        }
        Loader {
            id: trailing
            anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
            // A page without buttons leaves no width behind.
            width: item ? (item as Item).implicitWidth : 0
            // Every page is a ScreenPage; StackView knows its pages only as items.
            sourceComponent: pages.currentPage ? pages.currentPage.barItems : null
        }
        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: 0.5
            color: Theme.separator
        }
    }

    StackView {
        id: pages
        objectName: "pages"
        readonly property ScreenPage currentPage: currentItem as ScreenPage
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }

        function pushController(index, animated) {
            const controller = navigation.stack.controllerAt(index)
            push(controller.viewUrl, { controller: controller },
                 animated ? StackView.PushTransition : StackView.Immediate)
        }
    }

    Connections {
        target: navigation.stack
        function onRowsInserted(parent, first, last) {
            for (let i = first; i <= last; ++i)
                pages.pushController(i, true)
        }
        // The screens from `first` up went: the page below them is the top again.
        function onRowsRemoved(parent, first, last) {
            pages.pop(pages.get(first - 1, StackView.DontLoad), StackView.Immediate)
        }
    }

    Component.onCompleted: {
        for (let i = 0; i < stack.depth; ++i)
            pages.pushController(i, false)
    }
}
