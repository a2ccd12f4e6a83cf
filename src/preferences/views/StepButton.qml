import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// Half of a stepper: a press is a step, and a long one is many.
Item {
    id: half

    required property string symbol

    signal touched
    signal stepped

    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        radius: 4
        color: Theme.text
        opacity: !half.enabled ? 0 : area.pressed ? 0.16 : area.containsMouse ? 0.07 : 0
    }

    Symbol {
        anchors.centerIn: parent
        name: half.symbol
        fontSize: 8
        color: half.enabled ? Theme.text : Theme.placeholder
    }

    MouseArea {
        id: area

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onPressed: {
            half.touched();
            half.stepped();
            pause.start();
        }
        onReleased: stop()
        onCanceled: stop()

        function stop(): void {
            pause.stop();
            repeat.stop();
        }

        Timer {
            id: pause

            interval: 400
            onTriggered: repeat.start()
        }

        Timer {
            id: repeat

            interval: 80
            repeat: true
            running: false
            onTriggered: half.stepped()
        }
    }
}
