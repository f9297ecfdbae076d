#!/usr/bin/env python3
"""The tour of a technician who does not see the screen: every step by AT-SPI, with virtual cameras.

Usage: tour.py SHELF-CAMERA-DEMO     on an X display, with a session bus; see CMakeLists.txt
"""
import os
import sys
import tempfile

from reader import Atspi, Failure, Reader, RETURN

NAME = 'property-change:accessible-name'
DESCRIPTION = 'property-change:accessible-description'


def expect(condition, what):
    if not condition:
        raise Failure(what)


class Tour:
    def __init__(self, reader, folder):
        self.reader = reader
        self.folder = folder
        self.main = reader.window('摄像头测试')

    def run(self):
        for step in (self.read_start, self.open_link, self.test_heartbeat, self.read_versions,
                     self.take_picture, self.change_setting, self.view_picture, self.upload_image,
                     self.close_link):
            print(step.__name__, flush=True)
            self.reader.announcements.clear()
            step()

    def press(self, name, within=None):
        return self.reader.press('push button', name, within or self.main)

    def outcome(self, text):
        """The status bar tells it, and says so."""
        self.reader.hears(NAME, text, 'status bar')
        self.reader.find('status bar', having=text, within=self.main)

    def choose_entry(self, *path):
        """Opens the menus and presses the last entry."""
        place = self.reader.find('menu bar', within=self.main)
        for entry in path:
            place = self.reader.find('menu item', entry, place)
        self.reader.act(place, 'Press')

    # --- the steps -------------------------------------------------------------------------------------------

    def read_start(self):
        reader = self.reader
        for role, name in (('push button', '打开串口'), ('push button', '心跳测试'), ('text', '模型名称'),
                           ('label', '图片显示区'), ('label', '当前从机地址:1')):
            reader.find(role, name, self.main)
        expect(not reader.can(reader.find('push button', '心跳测试', self.main)), 'heartbeat needs a link')
        self.choose_entry('设置', '摄像头设置')
        window = reader.window('摄像头设置')
        expect(reader.value(reader.find('spin button', within=window)) == (1, 0, 255), 'the address and its limits')
        self.press('确认', window)
        for name in ('串口', '波特率'):
            expect(reader.described('combo box', name, self.main).get_name(), f'a value of {name}')

    def open_link(self):
        self.press('打开串口')
        self.outcome('已打开')
        self.reader.find('push button', '关闭串口', self.main)
        self.reader.find('label', having='从机地址 1', within=self.main)

    def test_heartbeat(self):
        lamp = self.reader.find('push button', '心跳测试结果', self.main)
        expect('还没有测试' in lamp.get_description(), lamp.get_description())
        self.press('心跳测试')
        self.reader.hears(DESCRIPTION, '有应答')
        lamp = self.reader.find('check box', '心跳测试结果', self.main)  # checkable after the first test
        expect('有应答' in lamp.get_description(), lamp.get_description())
        expect(self.reader.has(lamp, Atspi.StateType.CHECKED), 'the lamp is on')
        self.reader.find('status bar', having='测试心跳：完成', within=self.main)

    def read_versions(self):
        self.press('获取版本号')
        self.outcome('读取版本号')
        self.reader.find('label', having='QV-APP版本:', within=self.main)
        self.press('获取模型信息')
        self.reader.hears(NAME, '模型信息:', 'label')

    def take_picture(self):
        self.press('拍照')
        self.reader.hears(DESCRIPTION, '图片 33', 'image')
        self.reader.find('status bar', having='拍照：完成', within=self.main)

    def change_setting(self):
        reader = self.reader
        self.choose_entry('功能', '查询与设置属性', '图片压缩率')
        window = reader.window('图片压缩率设置窗口')
        self.press('获取当前压缩率', window)
        reader.find('label', having='当前图片压缩率:', within=window)
        reader.type(reader.find('text', within=window), '44')
        self.press('设置图片压缩率', window)
        reader.hears(NAME, '倒计时', 'label')
        reader.hears(NAME, '设置成功', 'label')
        reader.find('label', '当前图片压缩率:  44', window)

    def view_picture(self):
        reader = self.reader
        self.choose_entry('功能', '查看排面图片')
        window = reader.window('查看排面图片')
        self.press('刷新列表', window)
        row = reader.find('list item', '33', window)
        reader.act(row, 'Toggle')
        reader.wait_for(lambda: reader.has(row, Atspi.StateType.SELECTED), 'the row selected')
        pictures = reader.find('list', '图片列表', window)
        reader.tab_to(pictures)
        reader.press_key(RETURN)
        view = reader.window('查看图片')
        reader.find('image', '33.jpg', view)

    def upload_image(self):
        reader = self.reader
        image = os.path.join(self.folder, 'app.bin')
        with open(image, 'wb') as file:
            file.write(bytes(100000))
        self.press('App固件路径')
        dialog = reader.window('打开app固件')
        reader.type(reader.find('text', within=dialog), image)
        reader.act(reader.find('push button', having='打开', within=dialog), 'Press')
        reader.find('label', image, self.main)
        self.press('App固件升级')
        reader.hears(NAME, '等待摄像头确认', 'label')
        reader.find('progress bar', '传输进度', self.main)
        self.outcome('升级完成')
        box = reader.window('升级已完成，结果:true')
        self.press('确定', box)

    def close_link(self):
        self.press('关闭串口')
        self.outcome('串口已关闭')


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        reader = Reader([sys.argv[1]])
        try:
            Tour(reader, folder).run()
        except Failure as failure:
            print(reader.tree())
            for heard in reader.announcements:
                print('heard', heard)
            sys.exit(f'failed: {failure}')
        finally:
            reader.end()


main()
