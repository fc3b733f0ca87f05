pragma Singleton
import QtQuick

// Controls that sheets can point at, by the name a controller gives the sheet.
QtObject {
    property var items: ({})

    function register(name, item) {
        items[name] = item
    }
    function unregister(name, item) {
        if (items[name] === item)
            delete items[name]
    }
    function find(name) {
        return items[name] || null
    }
}
