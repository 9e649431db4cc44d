'''A fake UDisks2 disk service for the volume tests (a python3-dbusmock template).

It starts without drives. AddStick adds a drive with one mounted file system and announces
both through the object manager; SetMountPoints and RemoveStick change and remove them.
Unmount, Eject and PowerOff are recorded in order (Calls), and FailNext makes the next call
of a method fail the way a busy device does.
'''

import dbus

from dbusmock import OBJECT_MANAGER_IFACE, mockobject

BUS_NAME = 'org.freedesktop.UDisks2'
MAIN_OBJ = '/org/freedesktop/UDisks2'
MAIN_IFACE = 'org.freedesktop.UDisks2.Manager'
SYSTEM_BUS = False
IS_OBJECT_MANAGER = True

CONTROL_IFACE = 'org.hemlark.FakeUDisks2'
BLOCK_IFACE = 'org.freedesktop.UDisks2.Block'
FILESYSTEM_IFACE = 'org.freedesktop.UDisks2.Filesystem'
DRIVE_IFACE = 'org.freedesktop.UDisks2.Drive'

CALLS = []
FAILING = set()


def load(mock, _parameters):
    mock.AddProperties(MAIN_IFACE, {'Version': dbus.String('2.9.4', variant_level=1)})


def block_path(name):
    return MAIN_OBJ + '/block_devices/' + name


def drive_path(name):
    return MAIN_OBJ + '/drives/' + name


def mount_points(paths):
    return dbus.Array([dbus.ByteArray(path.encode() + b'\0') for path in paths],
                      signature='ay', variant_level=1)


def recorded(method):
    def run(self, *_args):
        CALLS.append((method, self.path))
        if method in FAILING:
            FAILING.discard(method)
            raise dbus.exceptions.DBusException(
                'Error ' + method.lower() + 'ing: target is busy',
                name='org.freedesktop.UDisks2.Error.DeviceBusy')
        if method == 'Unmount':
            self.UpdateProperties(FILESYSTEM_IFACE, {'MountPoints': mount_points([])})
    return run


def announce(path):
    manager = mockobject.objects[MAIN_OBJ]
    manager.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 'oa{sa{sv}}',
                       [dbus.ObjectPath(path), mockobject.objects[path].props])


@dbus.service.method(CONTROL_IFACE, in_signature='ssssbba{sv}', out_signature='')
def AddStick(self, name, mount_point, id_type, id_version, read_only, removable, drive):
    '''A drive "name" with one file system mounted at mount_point (none when empty).'''
    drive_properties = {
        'Removable': dbus.Boolean(removable, variant_level=1),
        'MediaRemovable': dbus.Boolean(False, variant_level=1),
        'Ejectable': dbus.Boolean(removable, variant_level=1),
        'CanPowerOff': dbus.Boolean(removable, variant_level=1),
        'Vendor': dbus.String('Fake', variant_level=1),
    }
    for key, value in drive.items():
        drive_properties[key] = dbus.Boolean(value, variant_level=1)
    self.AddObject(drive_path(name), DRIVE_IFACE, drive_properties, [
        ('Eject', 'a{sv}', '', recorded('Eject')),
        ('PowerOff', 'a{sv}', '', recorded('PowerOff')),
    ])
    announce(drive_path(name))

    self.AddObject(block_path(name), BLOCK_IFACE, {
        'Drive': dbus.ObjectPath(drive_path(name), variant_level=1),
        'IdType': dbus.String(id_type, variant_level=1),
        'IdVersion': dbus.String(id_version, variant_level=1),
        'IdLabel': dbus.String(name.upper(), variant_level=1),
        'ReadOnly': dbus.Boolean(read_only, variant_level=1),
        'Size': dbus.UInt64(8000000000, variant_level=1),
    }, [])
    block = mockobject.objects[block_path(name)]
    block.AddProperties(FILESYSTEM_IFACE, {
        'MountPoints': mount_points([mount_point] if mount_point else []),
    })
    block.AddMethods(FILESYSTEM_IFACE, [('Unmount', 'a{sv}', '', recorded('Unmount'))])
    announce(block_path(name))


@dbus.service.method(CONTROL_IFACE, in_signature='sas', out_signature='')
def SetMountPoints(_self, name, paths):
    mockobject.objects[block_path(name)].UpdateProperties(
        FILESYSTEM_IFACE, {'MountPoints': mount_points(paths)})


@dbus.service.method(CONTROL_IFACE, in_signature='s', out_signature='')
def RemoveStick(self, name):
    for path, interfaces in ((block_path(name), [BLOCK_IFACE, FILESYSTEM_IFACE]),
                             (drive_path(name), [DRIVE_IFACE])):
        self.RemoveObject(path)
        self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesRemoved', 'oas',
                        [dbus.ObjectPath(path), interfaces])


@dbus.service.method(CONTROL_IFACE, in_signature='s', out_signature='')
def FailNext(_self, method):
    FAILING.add(method)


@dbus.service.method(CONTROL_IFACE, in_signature='', out_signature='a(ss)')
def Calls(_self):
    return dbus.Array(CALLS, signature='(ss)')
